// The failures the C interface reports, and the functions that read them.
#include <new>

#include "capi/Handles.h"
#include "kavrin/Error.h"

namespace kavrin::capi {

namespace {

constexpr int32_t kOutOfMemory = 7;
constexpr int32_t kInternalError = 51;

kavrin_error* MakeError(int32_t number, String source, String description) {
  auto* error = new (std::nothrow) kavrin_error;
  if (!error) return nullptr;
  try {
    error->number = number;
    error->source = ToUtf8(source);
    error->description = ToUtf8(description);
    error->source16 = std::move(source);
    error->description16 = std::move(description);
  } catch (...) {
    // The number still tells what failed.
  }
  return error;
}

}  // namespace

kavrin_error* CurrentError() noexcept {
  try {
    throw;
  } catch (const Error& e) {
    try {
      return MakeError(e.number(), e.source(), e.description());
    } catch (...) {
      return MakeError(e.number(), {}, {});
    }
  } catch (const std::bad_alloc&) {
    return MakeError(kOutOfMemory, ComponentSource(), u"Out of memory");
  } catch (const std::exception& e) {
    try {
      return MakeError(kInternalError, ComponentSource(), u"Internal error: " + FromUtf8(e.what()));
    } catch (...) {
      return MakeError(kInternalError, {}, {});
    }
  } catch (...) {
    return MakeError(kInternalError, ComponentSource(), u"Internal error");
  }
}

}  // namespace kavrin::capi

extern "C" {

int32_t kavrin_error_number(const kavrin_error* error) {
  return error ? error->number : 0;
}

const char* kavrin_error_source(const kavrin_error* error) {
  return error ? error->source.c_str() : "";
}

const char* kavrin_error_description(const kavrin_error* error) {
  return error ? error->description.c_str() : "";
}

const uint16_t* kavrin_error_source16(const kavrin_error* error) {
  static const char16_t empty[1] = {};
  return reinterpret_cast<const uint16_t*>(error ? error->source16.c_str() : empty);
}

const uint16_t* kavrin_error_description16(const kavrin_error* error) {
  static const char16_t empty[1] = {};
  return reinterpret_cast<const uint16_t*>(error ? error->description16.c_str() : empty);
}

kavrin_error* kavrin_error_new(int32_t number, const char* source, const char* description) {
  try {
    kavrin::String text =
        description ? kavrin::FromUtf8(description) : kavrin::StandardDescription(number);
    return kavrin::capi::MakeError(number, kavrin::FromUtf8(source ? source : ""), std::move(text));
  } catch (...) {
    return nullptr;
  }
}

void kavrin_error_free(kavrin_error* error) {
  delete error;
}

}  // extern "C"
