// Reading the arguments of a late-bound call.
#pragma once

#include <span>

#include "kavrin/Error.h"
#include "kavrin/Variant.h"

namespace kavrin {

// Fails with 450 when more than `max` arguments are given, and with 449 when
// one of the first `required` is missing.
inline void CheckArgumentCount(std::span<Variant> args, size_t required, size_t max) {
  if (args.size() > max) throw Error::Runtime(errors::kWrongArgumentCount);
  for (size_t i = 0; i < required; ++i) {
    if (i >= args.size() || args[i].IsMissing()) {
      throw Error::Runtime(errors::kArgumentNotOptional);
    }
  }
}

// Argument `i`, or the omitted-argument marker when not given.
inline const Variant& ArgumentAt(std::span<Variant> args, size_t i) {
  static const Variant missing = Variant::Missing();
  return i < args.size() ? args[i] : missing;
}

}  // namespace kavrin
