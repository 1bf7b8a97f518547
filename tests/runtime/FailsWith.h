// Asserting that a call fails with a given platform error number.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "kavrin/Error.h"

namespace kavrin {

// Success when `call` throws a kavrin::Error numbered `number`.
template <typename Call>
testing::AssertionResult FailsWith(int32_t number, Call call) {
  try {
    call();
  } catch (const Error& e) {
    if (e.number() == number) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "failed with " << e.number() << " instead of " << number;
  }
  return testing::AssertionFailure() << "did not fail; expected error " << number;
}

}  // namespace kavrin
