// The reads of one member call on DBIA's connection, shared for as long as
// the call runs: opened when the call starts and ended when it returns or
// fails, so that nothing stays open between calls and the next call reads
// the data as it then is.
#pragma once

#include <memory>

#include "kavrin/KitDatabase.h"

namespace kavrin::detail {

struct ConnectionState;

class CallReads {
 public:
  // Nothing happens for an empty or unconnected DBIA.
  explicit CallReads(const std::shared_ptr<KitDatabase>& dbia);
  ~CallReads();
  CallReads(const CallReads&) = delete;
  CallReads& operator=(const CallReads&) = delete;

 private:
  std::shared_ptr<ConnectionState> connection_;
};

}  // namespace kavrin::detail
