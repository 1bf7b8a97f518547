// The suite's database kit: KitDatabase, the connection object a host hands
// to clsPub through DBIA, and KitRecordset, the dynaset it opens.
//
// A KitDatabase is either unconnected (the default: every use fails with
// Error 3709) or opened from a connection string: "sqlite:PATH" or a bare
// path ending in ".db" or ".sqlite" (opened read-only), or "odbc:..." where
// that driver is built. OpenQuery takes a complete SELECT text or the bare
// name of a table (all its rows and columns), and answers a KitRecordset that
// moves both ways, finds rows and counts them exactly from the moment it is
// open. Rows come in the engine's order; no ordering is ever added. Nothing
// is ever written to the database.
//
// A record set reads rows from the database only as they are asked for, and
// holds no lock and no running statement between its operations: writers
// commit while record sets stay open. Its answers are those of a record set
// that read every row when opened; when the data has changed since it read
// what it holds, its next read goes on over the current data.
//
// Objects are shared (std::shared_ptr) and not copyable: a copy would share
// the connection or the cursor without saying so. Thread-safety: none; one
// thread at a time per object. Separate KitDatabase objects are independent.
#pragma once

#include <cstdint>
#include <memory>

#include "kavrin/Ado.h"
#include "kavrin/Dispatch.h"
#include "kavrin/Export.h"
#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin {

// The kit's record-set types; the component always asks for a dynaset.
inline constexpr int32_t dbOpenDynaset = 2;

class KAVRIN_API KitRecordset : public Dispatch {
 public:
  // An empty record set: RecordCount 0, BOF and EOF true, Close harmless.
  KitRecordset();
  // Wraps an open ADO record set with a client cursor.
  explicit KitRecordset(std::shared_ptr<ado::Recordset> recordset);
  ~KitRecordset() override;
  KitRecordset(const KitRecordset&) = delete;
  KitRecordset& operator=(const KitRecordset&) = delete;

  // The ADO record set this wraps, on the same current row.
  std::shared_ptr<ado::Recordset> AdoRecordset() const { return recordset_; }
  bool Bof() const;
  // True when the latest FindFirst found no row.
  bool NoMatch() const { return no_match_; }
  bool Eof() const;
  ado::Fields Fields() const;
  int32_t RecordCount() const;
  void Close();
  // Makes the first row satisfying `criteria` current, searching from the
  // first row, and sets NoMatch false; leaves the position and sets NoMatch
  // true when none does. Criteria: comparisons "column = literal" (or <>)
  // joined by AND, a literal being a text in single quotes, a number, True or
  // False; texts compare as the database compares that column. Throws 3077
  // for criteria it cannot read, 3070 for an unknown column.
  void FindFirst(StringView criteria);
  void MoveFirst();
  void MoveLast();
  void MoveNext();

  String TypeName() const override { return u"KitRecordset"; }
  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override;

 private:
  std::shared_ptr<ado::Recordset> recordset_;
  bool no_match_ = false;
};

class KAVRIN_API KitDatabase : public Dispatch {
 public:
  // Unconnected: OpenQuery and Connection fail with Error 3709.
  KitDatabase();
  // Opens the database named by `connection_string`. Throws Error when the
  // string has an unknown form or the database cannot be opened.
  explicit KitDatabase(StringView connection_string);
  ~KitDatabase() override;
  KitDatabase(const KitDatabase&) = delete;
  KitDatabase& operator=(const KitDatabase&) = delete;

  static std::shared_ptr<KitDatabase> Open(StringView connection_string) {
    return std::make_shared<KitDatabase>(connection_string);
  }

  // Opens `source` (a SELECT text or a bare table name) as a dynaset. `type`
  // must be a number (the component passes 2); the three optional arguments
  // are accepted and ignored. Throws 3709 when unconnected, 13 for a type
  // that is not a number, or the engine's error.
  std::shared_ptr<KitRecordset> OpenQuery(StringView source,
                                          const Variant& type = int32_t{dbOpenDynaset},
                                          const Variant& options = Variant::Missing(),
                                          const Variant& lock_edit = Variant::Missing(),
                                          const Variant& reserved = Variant::Missing());

  // The live ADO connection. Throws 3709 when unconnected.
  std::shared_ptr<ado::Connection> Connection() const;

  bool IsConnected() const { return connection_ != nullptr; }

  String TypeName() const override { return u"KitDatabase"; }
  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override;

 private:
  std::shared_ptr<ado::Connection> connection_;
};

}  // namespace kavrin
