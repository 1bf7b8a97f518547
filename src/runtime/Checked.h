// 16-bit arithmetic with the platform's overflow rule: a counter or running
// sum kept as an Integer fails with Error 6 when it would leave -32768..32767.
#pragma once

#include <cstdint>

#include "kavrin/Error.h"

namespace kavrin {

inline int16_t CheckedInteger(int32_t value) {
  if (value < INT16_MIN || value > INT16_MAX) throw Error::Runtime(errors::kOverflow);
  return static_cast<int16_t>(value);
}

inline int16_t AddInteger(int16_t a, int32_t b) {
  return CheckedInteger(int32_t{a} + b);
}

}  // namespace kavrin
