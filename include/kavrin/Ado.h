// ADO stand-ins: the live Connection of the kit, and the Recordset, Fields
// and Field that methods open and read on the direct path.
//
// A Recordset is opened on a Connection with a SELECT text; it has a current
// row, BOF and EOF flags and the columns of the current row. Column names are
// looked up without regard to letter case. Failures are Errors with ADO's
// numbers: 3021 reading a field without a current row or moving past the end,
// 3265 an unknown field, 3704 using a closed record set, 3705 opening an open
// one, 3709 opening without a connection; the engine's own errors otherwise.
//
// Connection and Recordset are shared (std::shared_ptr) and not copyable: a
// copy would silently share the cursor. Fields and Field are small copyable
// handles onto their record set: every copy reads the record set's current
// row at the moment it is asked, and keeps the record set's rows alive.
// Thread-safety: none; use an object from one thread at a time.
//
// The C library defines EOF as a macro, so the flags are spelled Bof()/Eof()
// in C++; late binding knows them as "BOF" and "EOF".
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "kavrin/Dispatch.h"
#include "kavrin/Export.h"
#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin {
namespace detail {
struct ConnectionState;
struct RecordsetState;
class Access;
}  // namespace detail

namespace ado {

// Cursor locations, types, lock types and command options, ADO's numbering.
inline constexpr int32_t adUseServer = 2;
inline constexpr int32_t adUseClient = 3;
inline constexpr int32_t adOpenForwardOnly = 0;
inline constexpr int32_t adLockReadOnly = 1;
inline constexpr int32_t adCmdText = 1;
inline constexpr int32_t adCmdTable = 2;

// The kit's live connection to the suite database. Created by KitDatabase;
// hosts only pass it on, or watch the texts sent through it.
class KAVRIN_API Connection : public Dispatch {
 public:
  // Receives every source text handed to KitDatabase::OpenQuery or
  // Recordset::Open on this connection, in order, exactly as passed.
  using TraceObserver = std::function<void(StringView source)>;

  ~Connection() override;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Installs (or, with nullptr, removes) the trace observer.
  void SetTrace(TraceObserver observer);

  String TypeName() const override { return u"Connection"; }
  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override;

 private:
  friend class detail::Access;
  explicit Connection(std::shared_ptr<detail::ConnectionState> state);

  std::shared_ptr<detail::ConnectionState> state_;
};

class Recordset;

// One column of a record set's current row.
class KAVRIN_API Field {
 public:
  String Name() const;
  // The value in the current row. Throws 3021 when there is no current row.
  Variant Value() const;

 private:
  friend class Fields;
  Field(std::shared_ptr<detail::RecordsetState> state, size_t index);

  std::shared_ptr<detail::RecordsetState> state_;
  size_t index_;
};

// The columns of a record set.
class KAVRIN_API Fields {
 public:
  int32_t Count() const;
  // The column named `name` (letter case ignored). Throws 3265 when there is none.
  Field Item(StringView name) const;
  // The column at position `index` from 0. Throws 3265 outside the range.
  Field Item(int32_t index) const;
  Field operator()(StringView name) const { return Item(name); }
  Field operator()(int32_t index) const { return Item(index); }

 private:
  friend class Recordset;
  explicit Fields(std::shared_ptr<detail::RecordsetState> state);

  std::shared_ptr<detail::RecordsetState> state_;
};

class KAVRIN_API Recordset : public Dispatch {
 public:
  // A closed record set with a server-side cursor location.
  Recordset();
  ~Recordset() override;
  Recordset(const Recordset&) = delete;
  Recordset& operator=(const Recordset&) = delete;

  int32_t CursorLocation() const;
  void CursorLocation(int32_t location);

  // Runs `source` on `active_connection`. With the client cursor location
  // the record set is static and counts its rows; otherwise it is forward-only
  // and RecordCount() answers -1. Throws 3709 without a connection, 3705 when
  // already open, or the engine's error.
  void Open(StringView source, const std::shared_ptr<Connection>& active_connection,
            int32_t cursor_type = adOpenForwardOnly, int32_t lock_type = adLockReadOnly,
            int32_t options = adCmdText);

  bool Bof() const;
  bool Eof() const;
  ado::Fields Fields() const;
  // Moves to the next row; past the last row EOF becomes true. Throws 3021 at EOF.
  void MoveNext();
  // Throw 3021 on an empty record set.
  void MoveFirst();
  void MoveLast();
  int32_t RecordCount() const;
  // Closes; closing a closed record set does nothing.
  void Close();

  String TypeName() const override { return u"Recordset"; }
  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override;

 private:
  friend class detail::Access;

  std::shared_ptr<detail::RecordsetState> state_;
};

}  // namespace ado
}  // namespace kavrin
