// Asserting that a call fails with a given platform error: its number and the
// source that raised it.
#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "kavrin/Error.h"

namespace kavrin::testing {

// The one source the catalogue gives `number`, if it gives one only.
inline std::optional<StringView> OnlySource(int32_t number) {
  std::optional<StringView> only;
  for (const ErrorEntry& entry : ErrorCatalogue()) {
    if (entry.number != number) continue;
    if (only || entry.source.empty()) return std::nullopt;
    only = entry.source;
  }
  return only;
}

// Whether `e` carries `number` from `source`.
inline ::testing::AssertionResult IsError(const Error& e, int32_t number, StringView source) {
  if (e.number() == number && e.source() == source) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "expected error " << number << " from " << ToUtf8(source) << ", got " << e.number()
         << " from " << ToUtf8(e.source()) << ": " << e.what();
}

// Whether `e` carries `number` from the one source the catalogue gives it; a
// number raised by several sources needs the source stated.
inline ::testing::AssertionResult IsError(const Error& e, int32_t number) {
  if (auto source = OnlySource(number)) return IsError(e, number, *source);
  return ::testing::AssertionFailure()
         << "error " << number << " has several sources: state the "
         << "one expected (got " << e.number() << " from " << ToUtf8(e.source()) << ")";
}

}  // namespace kavrin::testing

// Expects `statement` to throw kavrin::Error carrying `number`, and `source`
// when given: EXPECT_KAVRIN_ERROR(statement, number[, source]).
#define EXPECT_KAVRIN_ERROR(statement, ...)                                             \
  do {                                                                                  \
    try {                                                                               \
      statement;                                                                        \
      ADD_FAILURE() << "expected an error from " #statement;                            \
    } catch (const ::kavrin::Error& kavrin_error) {                                     \
      EXPECT_TRUE(::kavrin::testing::IsError(kavrin_error, __VA_ARGS__)) << #statement; \
    }                                                                                   \
  } while (false)
