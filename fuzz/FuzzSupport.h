// Shared pieces of the fuzz targets: reading the fuzzer's bytes as texts and
// values, the error numbers a call may fail with, the check that stops a run
// when an invariant breaks, and the demo company the targets run against.
#pragma once

#include <stdlib.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>

#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "kavrin/Schema.h"

namespace kavrin::fuzz {

// Stops the run with a message when an invariant does not hold; libFuzzer
// then saves the input that broke it. The message is made only then.
#define FUZZ_CHECK(condition, message) \
  ((condition) ? void()                \
               : ::kavrin::fuzz::Broken(#condition, std::string(message), __FILE__, __LINE__))

[[noreturn]] inline void Broken(const char* condition, const std::string& message, const char* file,
                                int line) {
  std::fprintf(stderr, "invariant broken: %s (%s) at %s:%d\n", condition, message.c_str(), file,
               line);
  std::abort();
}

// An error the catalogue lists: its number from a source that raises it (438
// from any object).
inline bool IsCataloguedError(const Error& e) {
  return std::ranges::any_of(ErrorCatalogue(), [&](const ErrorEntry& entry) {
    return entry.number == e.number() && (entry.source.empty() || entry.source == e.source());
  });
}

// A known error, with a description and a source; and one of `numbers` when
// they are given.
inline void CheckKnownError(const Error& e, std::initializer_list<int32_t> numbers = {}) {
  FUZZ_CHECK(IsCataloguedError(e) && !e.description().empty() && !e.source().empty() &&
                 (numbers.size() == 0 || std::ranges::count(numbers, e.number()) == 1),
             e.what());
}

// The answer of `call`, or nothing when it failed with a known error (one of
// `numbers` when they are given). Anything else escapes and ends the run.
template <typename F>
auto Try(F&& call, std::initializer_list<int32_t> numbers = {}) -> std::optional<decltype(call())> {
  try {
    return call();
  } catch (const Error& e) {
    CheckKnownError(e, numbers);
    return std::nullopt;
  }
}

// A text from the fuzzer's bytes: UTF-8 (invalid sequences read as U+FFFD),
// or, after a leading 0xFE byte, raw UTF-16 units in little-endian order so
// that lone surrogates and any other unit can be reached.
inline String TextFromBytes(const uint8_t* data, size_t size) {
  if (size == 0 || data[0] != 0xFE)
    return FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
  String text;
  for (size_t i = 1; i + 1 < size; i += 2)
    text.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
  return text;
}

// Reads the fuzzer's bytes from the front, giving zeros once they run out.
class ByteReader {
 public:
  ByteReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  bool Empty() const { return pos_ >= size_; }
  uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }
  uint16_t Word() { return static_cast<uint16_t>(Byte() | (Byte() << 8)); }
  uint32_t Long() { return Word() | (static_cast<uint32_t>(Word()) << 16); }
  double Double() { return std::bit_cast<double>(Long() | (static_cast<uint64_t>(Long()) << 32)); }
  // A text whose length in bytes is given by the next byte (255 means "the
  // rest"), read as TextFromBytes reads it.
  String Text() {
    size_t length = Byte();
    if (length == 255 || length > size_ - pos_) length = size_ - pos_;
    pos_ += length;
    return TextFromBytes(data_ + pos_ - length, length);
  }
  // A value of the kind numbered in this order: Missing, Empty, Null,
  // Integer, Long, Byte, Double, Boolean, Date, String.
  Variant Value(uint8_t kind) {
    if (kind == 0) return Variant::Missing();
    if (kind == 1) return Variant();
    if (kind == 2) return Variant::Null();
    if (kind == 3) return Variant(static_cast<int16_t>(Word()));
    if (kind == 4) return Variant(static_cast<int32_t>(Long()));
    if (kind == 5) return Variant(Byte());
    if (kind == 6) return Variant(Double());
    if (kind == 7) return Variant(Byte() % 2 == 0);
    if (kind == 8) return Variant(Date{Double()});
    return Variant(Text());
  }

 private:
  const uint8_t* data_;
  size_t size_, pos_ = 0;
};

// The demo company in a temporary directory, made once per process and
// removed at exit.
struct Fixture {
  static const Fixture& Get() {
    static const Fixture fixture;
    return fixture;
  }
  Fixture() { CreateSuiteDatabase(FromUtf8("sqlite:" + path), true); }
  ~Fixture() {
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
  }

  std::shared_ptr<KitDatabase> Open() const {
    return KitDatabase::Open(FromUtf8("sqlite:" + path));
  }
  std::string Bytes() const {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  // Whether only the database itself is in the directory: no journal, no
  // write-ahead log, no file an ATTACH or VACUUM INTO made.
  bool DirectoryHoldsOnlyTheDatabase() const {
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator(dir), fs::directory_iterator()) == 1;
  }

  std::string dir = [] {
    std::string made = (std::filesystem::temp_directory_path() / "kavrin-fuzz-XXXXXX").string();
    if (!mkdtemp(made.data())) std::abort();
    return made;
  }();
  std::string path = dir + "/suite.sqlite";
};

}  // namespace kavrin::fuzz
