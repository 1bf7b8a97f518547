// What the C interface's handles hold, and the conversions between the C
// values and Variants that every entry point shares.
#pragma once

#include <memory>
#include <string>

#include "kavrin/Dispatch.h"
#include "kavrin/Variant.h"
#include "kavrin/kavrin.h"

// A handle: one shared reference to an object.
struct kavrin_object {
  std::shared_ptr<kavrin::Dispatch> object;
};

// A failure as the caller reads it; the texts are kept in both encodings so
// that the accessors can hand out stable pointers.
struct kavrin_error {
  int32_t number = 0;
  std::string source;
  std::string description;
  std::u16string source16;
  std::u16string description16;
};

namespace kavrin::capi {

// Storage a library-filled kavrin_value owns (its owned_ member).
struct Owned {
  virtual ~Owned() = default;
};

// The Variant a caller's value stands for. Throws Error 13 for an unknown
// kind, 6 for an Integer or Byte out of range, 5 for a NULL text or array
// with a length, and the coercion's error for an element a typed array
// cannot hold.
Variant ToVariant(const kavrin_value& value);

// Fills `out` (which holds nothing of the library's) with `value`, the texts
// in UTF-16 when `utf16`; objects get new handles.
void FromVariant(const Variant& value, kavrin_value& out, bool utf16);

// A new kavrin_error for the exception being handled: a kavrin::Error as it
// is, std::bad_alloc as 7, anything else as 51 (internal error). Never
// throws; answers nullptr when even that cannot be allocated.
kavrin_error* CurrentError() noexcept;

// Runs `body` with every exception turned into 1 and *error; 0 on success.
template <class Body>
int Guard(kavrin_error** error, Body&& body) noexcept {
  if (error) *error = nullptr;
  try {
    body();
    return 0;
  } catch (...) {
    if (error) *error = CurrentError();
    return 1;
  }
}

}  // namespace kavrin::capi
