// The usual fixture of a component test: a suite database of the test's own,
// a clsPub connected to it through DBIA, and the trace of the texts it sends.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "kavrin/clsPub.h"
#include "support/SuiteDb.h"

namespace kavrin::testing {

class ComponentTest : public ::testing::Test {
 protected:
  explicit ComponentTest(bool demo = false) : suite_(demo) { pub_.DBIA(db_); }

  // Writes rows (portable SQL: plain INSERTs, bits as 0/1, dates as
  // 'yyyy-mm-dd hh:mm:ss' texts).
  void Exec(const std::string& sql) { suite_.Exec(sql); }
  // The texts sent since the last Clear.
  const std::vector<String>& Sent() const { return *trace_; }
  void ClearSent() { trace_->clear(); }

  SuiteDb suite_;
  std::shared_ptr<KitDatabase> db_ = suite_.Open();
  std::shared_ptr<std::vector<String>> trace_ = TraceQueries(*db_);
  clsPub pub_;
};

}  // namespace kavrin::testing
