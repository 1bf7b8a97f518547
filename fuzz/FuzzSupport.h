// Shared pieces of the fuzz targets: reading the fuzzer's bytes as texts and
// values, the error numbers a call may fail with, and the check that stops a
// run when an invariant breaks.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "kavrin/Error.h"
#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin::fuzz {

// Stops the run with a message when an invariant does not hold; libFuzzer
// then saves the input that broke it.
#define FUZZ_CHECK(condition, message)                                         \
  do {                                                                         \
    if (!(condition)) {                                                        \
      std::fprintf(stderr, "invariant broken: %s (%s) at %s:%d\n", #condition, \
                   std::string(message).c_str(), __FILE__, __LINE__);          \
      std::abort();                                                            \
    }                                                                          \
  } while (false)

// Every number a failing call of the component or its platform may carry.
inline bool IsKnownErrorNumber(int32_t number) {
  switch (number) {
    case errors::kInvalidProcedureCall:
    case errors::kOverflow:
    case errors::kSubscriptOutOfRange:
    case errors::kTypeMismatch:
    case errors::kObjectNotSet:
    case errors::kInvalidUseOfNull:
    case 429:  // cannot create object
    case errors::kMemberNotFound:
    case errors::kArgumentNotOptional:
    case errors::kWrongArgumentCount:
    case errors::kNoCurrentRecord:
    case 3070:  // kit: unknown column in criteria
    case 3077:  // kit: criteria it cannot read
    case errors::kItemNotFound:
    case 3420:  // DAO: object no longer set
    case 3464:  // kit: type mismatch in criteria
    case errors::kObjectClosed:
    case 3705:  // ADO: object already open
    case errors::kNoConnection:
    case errors::kProviderSyntax:
    case errors::kProviderNoTable:
    case errors::kProviderTimeout:
    case errors::kProviderFailure:
      return true;
    default:
      return false;
  }
}

inline void CheckKnownError(const Error& e) {
  FUZZ_CHECK(IsKnownErrorNumber(e.number()), e.what());
  FUZZ_CHECK(!e.description().empty(), e.what());
  FUZZ_CHECK(!e.source().empty(), e.what());
}

// A text from the fuzzer's bytes: UTF-8 (invalid sequences read as U+FFFD),
// or, after a leading 0xFE byte, raw UTF-16 units in little-endian order so
// that lone surrogates and any other unit can be reached.
inline String TextFromBytes(const uint8_t* data, size_t size) {
  if (size > 0 && data[0] == 0xFE) {
    String text;
    for (size_t i = 1; i + 1 < size; i += 2)
      text.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
    return text;
  }
  return FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
}

// Reads the fuzzer's bytes from the front, giving zeros once they run out.
class ByteReader {
 public:
  ByteReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  bool Empty() const { return pos_ >= size_; }
  uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }
  uint16_t Word() { return static_cast<uint16_t>(Byte() | (Byte() << 8)); }
  uint32_t Long() { return static_cast<uint32_t>(Word() | (static_cast<uint32_t>(Word()) << 16)); }
  double Double() {
    uint64_t bits = 0;
    for (int i = 0; i < 8; ++i)
      bits |= static_cast<uint64_t>(Byte()) << (8 * i);
    double value;
    static_assert(sizeof value == sizeof bits);
    __builtin_memcpy(&value, &bits, sizeof value);
    return value;
  }
  // A text whose length in bytes is given by the next byte (255 means "the
  // rest"), read as TextFromBytes reads it.
  String Text() {
    size_t length = Byte();
    if (length == 255 || length > size_ - pos_) length = size_ - pos_;
    const String text = TextFromBytes(data_ + pos_, length);
    pos_ += length;
    return text;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
};

}  // namespace kavrin::fuzz
