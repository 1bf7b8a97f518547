// The platform layer's way into the ADO objects: the engine state behind a
// connection and the row state behind a record set, which the public classes
// keep to themselves. Only the platform layer (and tests of it) include this.
#pragma once

#include <memory>

#include "kavrin/Ado.h"
#include "platform/State.h"

namespace kavrin::detail {

class Access {
 public:
  // A connection over `state`.
  static std::shared_ptr<ado::Connection> MakeConnection(std::shared_ptr<ConnectionState> state) {
    return std::shared_ptr<ado::Connection>(new ado::Connection(std::move(state)));
  }
  static ConnectionState& State(const ado::Connection& connection) { return *connection.state_; }
  // The row state a record set shares with its Fields and with the kit
  // record set built on it.
  static RecordsetState& State(const ado::Recordset& recordset) { return *recordset.state_; }
};

}  // namespace kavrin::detail
