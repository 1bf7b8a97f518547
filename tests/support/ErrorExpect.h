// Asserting that a call fails with a given platform error number.
#pragma once

#include <gtest/gtest.h>

#include "kavrin/Error.h"

// Expects `statement` to throw kavrin::Error carrying `number`.
#define EXPECT_KAVRIN_ERROR(statement, expected_number)                               \
  do {                                                                                \
    try {                                                                             \
      statement;                                                                      \
      ADD_FAILURE() << "expected error " << (expected_number) << " from " #statement; \
    } catch (const ::kavrin::Error& e) {                                              \
      EXPECT_EQ(e.number(), (expected_number)) << #statement << ": " << e.what();     \
    }                                                                                 \
  } while (false)
