// A desktop database as DAO presents it: a file of tables and stored queries
// that a host opened itself and hands to clsPub::ExistTableQueryDAO.
//
// dao::Database offers what the component asks of such a file: its table
// definitions (TableDefs) and stored query definitions (QueryDefs), each
// looked up by name without regard to letter case, and its Name. A name that
// is not in the collection fails with Error 3265 ("Item not found in this
// collection."), the one failure a caller may read as "absent". A host may
// implement Database over any store that can answer those lookups; Open gives
// the shipped one, over a SQLite file whose tables are the table definitions
// and whose views are the stored queries.
//
// Objects are shared (std::shared_ptr); a Database is not copyable (a copy
// would share the open file). A Database is also a Dispatch, so it
// travels in a Variant as an object and answers TableDefs(name),
// QueryDefs(name), Name and Close by late binding. Thread-safety: none; one
// thread at a time per object.
#pragma once

#include <cstdint>
#include <memory>

#include "kavrin/Dispatch.h"
#include "kavrin/Error.h"
#include "kavrin/Export.h"
#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin::dao {

// DAO's numbers for the failures of a desktop database: 3265 "Item not found
// in this collection.", 3420 "Object invalid or no longer set.".
using errors::kItemNotFound;
using errors::kObjectInvalid;

// A table definition or a stored query definition found in a Database.
class KAVRIN_API Definition final : public Dispatch {
 public:
  enum class Kind : uint8_t { Table, Query };

  Definition(Kind kind, String name) : kind_(kind), name_(std::move(name)) {}

  Kind kind() const { return kind_; }
  // The name as the database holds it (its own letter case).
  const String& Name() const { return name_; }

  // "TableDef" or "QueryDef".
  String TypeName() const override;
  // Name, read by late binding.
  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override;

 private:
  Kind kind_;
  String name_;
};

class KAVRIN_API Database : public Dispatch {
 public:
  ~Database() override;
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // Opens the SQLite file at `path` read-only. Throws Error with a provider
  // number when the file cannot be opened or is not a database.
  static std::shared_ptr<Database> Open(StringView path);

  // The name the database was opened by (the file's path).
  virtual String Name() const = 0;
  // The table named `name`. Throws 3265 when there is none, 3420 after Close.
  virtual std::shared_ptr<Definition> TableDefs(StringView name) const = 0;
  // The stored query named `name`. Throws 3265 when there is none, 3420 after
  // Close.
  virtual std::shared_ptr<Definition> QueryDefs(StringView name) const = 0;
  // Closes the database; every lookup afterwards fails with 3420.
  virtual void Close() = 0;

  String TypeName() const override { return u"Database"; }
  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override;

 protected:
  Database() = default;
};

}  // namespace kavrin::dao
