// A run of one character, as the platform's String$ builds it.
#pragma once

#include <cstdint>

#include "kavrin/Error.h"
#include "kavrin/String.h"

namespace kavrin {

// `count` copies of `c`. A negative count is an invalid argument (Error 5).
inline String StringOf(int32_t count, char16_t c) {
  if (count < 0) throw Error::Runtime(errors::kInvalidProcedureCall);
  return String(static_cast<size_t>(count), c);
}

}  // namespace kavrin
