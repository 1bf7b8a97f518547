// The rows behind a record set and its current position in them.
//
// A record set over a statement or a whole table reads its rows from the
// engine only when they are asked for, and lets go of the engine between
// operations: no statement stays open in the engine, no lock is held and
// only a bounded number of rows is kept, whatever the size of the result.
//
// Each answer is the one a record set that loaded every row at the same
// moment would give. The rows a record set holds, and its count once known,
// belong to the data version it read them at; when a later read finds that
// the database has changed since, everything held is dropped and the record
// set goes on over the current data from the same position (the same row of
// a table, the same place in a result). An engine that cannot tell versions
// apart is taken to stay unchanged, and one that cannot repeat the order of
// a statement's rows gets record sets that load every row at once.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "db/Driver.h"
#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin::detail {

struct ConnectionState;
class BoundCriteria;

// A record set's rows. BOF holds only for a set without rows; the moves
// expect a set with rows (MoveNext one that is not past its end): the
// record set checks that first and raises the platform's errors.
class RowSource {
 public:
  virtual ~RowSource() = default;
  // The set holds no row.
  virtual bool Empty() = 0;
  // Past the last row, or no row at all.
  virtual bool AtEnd() = 0;
  // The current row's values, or nullptr when there is no current row.
  virtual const std::vector<Variant>* Current() = 0;
  virtual void MoveFirst() = 0;
  virtual void MoveLast() = 0;
  virtual void MoveNext() = 0;
  // The exact number of rows.
  virtual int64_t Count() = 0;
  // Makes the first row satisfying `criteria` current and answers true, or
  // answers false and leaves the position.
  virtual bool FindFirst(const BoundCriteria& criteria) = 0;
};

struct OpenedRows {
  std::vector<db::ColumnInfo> columns;
  std::unique_ptr<RowSource> rows;
};

// The rows of statement `sql`. Throws the engine's error when the statement
// is refused or its first rows cannot be read.
OpenedRows OpenStatement(ConnectionState& connection, StringView sql);

// All rows and columns of table `table`, in the order SELECT * gives them.
OpenedRows OpenWholeTable(ConnectionState& connection, StringView table);

// The rows of `sql`, every one of them read at once.
OpenedRows OpenLoaded(ConnectionState& connection, StringView sql);

}  // namespace kavrin::detail
