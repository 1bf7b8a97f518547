// The error trap of the members that answer a default instead of failing:
// every Error raised in `body` is absorbed and `fallback` answered.
#pragma once

#include "kavrin/Error.h"

namespace kavrin {

template <typename T, typename Body>
T AnswerOrDefault(T fallback, Body&& body) {
  try {
    return body();
  } catch (const Error&) {
    return fallback;
  }
}

}  // namespace kavrin
