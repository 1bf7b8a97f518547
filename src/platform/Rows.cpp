#include "platform/Rows.h"

#include <algorithm>
#include <deque>

#include "platform/Criteria.h"
#include "platform/State.h"

namespace kavrin::detail {

namespace {

// Rows a statement's record set keeps from its start: a result this short
// is read whole when the record set opens and never asked for again.
constexpr size_t kHeadRows = 16;
// Rows read together beyond the start, growing from the first to the most.
constexpr size_t kFirstChunkRows = 64;
constexpr size_t kMostChunkRows = 1024;
// Rows of a table read ahead of a move to the next row.
constexpr size_t kAheadRows = 16;
// Counts remembered per connection.
constexpr size_t kMostCounts = 256;

std::vector<Variant> ReadRow(const db::Cursor& cursor) {
  const size_t n = cursor.Columns().size();
  std::vector<Variant> row;
  row.reserve(n);
  for (size_t i = 0; i < n; ++i)
    row.push_back(cursor.Value(i));
  return row;
}

// Rewinds a cursor when an operation ends, however it ends, so that the
// engine holds nothing for it between operations.
class RewindOnExit {
 public:
  explicit RewindOnExit(db::Cursor* cursor) : cursor_(cursor) {}
  ~RewindOnExit() {
    if (cursor_) cursor_->Rewind();
  }
  RewindOnExit(const RewindOnExit&) = delete;
  RewindOnExit& operator=(const RewindOnExit&) = delete;

 private:
  db::Cursor* cursor_;
};

// Where a lazily read set stands: on its first row, whichever that is when
// asked (where a set stands when opened and after MoveFirst); on a row; on
// its last row, not yet read; or past its last row.
enum class At { kFirst, kRow, kLast, kAfter };

// Every row held in memory: what a record set on an engine that cannot
// repeat a statement's row order uses, and the reference lazy sets answer as.
class LoadedRows final : public RowSource {
 public:
  explicit LoadedRows(db::Cursor& cursor) {
    while (cursor.Next())
      rows_.push_back(ReadRow(cursor));
  }

  bool Empty() override { return rows_.empty(); }
  bool AtEnd() override { return position_ >= rows_.size(); }
  const std::vector<Variant>* Current() override {
    return position_ < rows_.size() ? &rows_[position_] : nullptr;
  }
  void MoveFirst() override { position_ = 0; }
  void MoveLast() override { position_ = rows_.size() - 1; }
  void MoveNext() override { ++position_; }
  int64_t Count() override { return static_cast<int64_t>(rows_.size()); }
  bool FindFirst(const BoundCriteria& criteria) override {
    for (size_t row = 0; row < rows_.size(); ++row) {
      if (criteria.Accepts(rows_[row])) {
        position_ = row;
        return true;
      }
    }
    return false;
  }

 private:
  std::vector<std::vector<Variant>> rows_;
  size_t position_ = 0;
};

// Shared by the lazy sets: the connection they read through and the data
// version of what they hold.
class LazyRows : public RowSource {
 protected:
  explicit LazyRows(ConnectionState& connection) : connection_(connection.shared_from_this()) {}

  db::Connection& engine() const { return *connection_->engine; }

  // Called after each read from the engine: when the data changed since the
  // rows held were read, they no longer hold.
  void Observe() {
    const auto now = engine().LatestDataVersion();
    if (observed_ && now != version_) Drop();
    version_ = now;
    observed_ = true;
  }
  // Lets go of whatever belongs to the data version held.
  virtual void Drop() = 0;

  // Lets go of the connection, for a set that will not read again.
  void Detach() { connection_.reset(); }

  std::optional<int64_t> KnownCount(const String& sql) const {
    return connection_->KnownCount(sql, version_);
  }
  void RememberCount(const String& sql, int64_t rows) {
    connection_->RememberCount(sql, version_, rows);
  }

 private:
  std::shared_ptr<ConnectionState> connection_;
  std::optional<db::DataVersion> version_;
  bool observed_ = false;
};

// The rows of a statement, by their place in its result. A short result is
// read whole at once; a longer one keeps its first rows and a window of
// rows, and runs the statement again from the top to reach any other row.
class QueryRows final : public LazyRows {
 public:
  QueryRows(ConnectionState& connection, String sql, std::unique_ptr<db::Cursor> cursor)
      : LazyRows(connection), sql_(std::move(sql)), cursor_(std::move(cursor)) {
    // Should reading fail, the cursor goes with this half-made set.
    bool ended = true;
    while (cursor_->Next()) {
      head_.push_back(ReadRow(*cursor_));
      if (head_.size() > kHeadRows) {
        ended = false;
        break;
      }
    }
    Observe();
    empty_ = head_.empty();
    whole_ = ended;
    if (whole_) {
      // Nothing more to read: the set needs neither its cursor nor the
      // connection any longer.
      total_ = static_cast<int64_t>(head_.size());
      cursor_.reset();
      Detach();
    } else {
      cursor_->Rewind();
    }
  }

  bool Empty() override {
    if (!empty_) empty_ = Row(0) == nullptr;
    return *empty_;
  }
  bool AtEnd() override { return Empty() || at_ == At::kAfter; }

  const std::vector<Variant>* Current() override {
    if (at_ == At::kLast) {
      const int64_t rows = Count();
      at_ = rows > 0 ? At::kRow : At::kAfter;
      position_ = rows - 1;
    }
    if (at_ != At::kRow) return nullptr;
    const auto* row = Row(position_);
    if (!row) at_ = At::kAfter;
    return row;
  }

  void MoveFirst() override {
    at_ = At::kRow;
    position_ = 0;
  }
  void MoveLast() override {
    if (total_) {
      at_ = *total_ > 0 ? At::kRow : At::kAfter;
      position_ = *total_ - 1;
    } else {
      at_ = At::kLast;  // found only when a row is read: MoveLast, MoveFirst reads nothing
    }
  }
  void MoveNext() override {
    if (at_ != At::kRow) {
      at_ = At::kAfter;
      return;
    }
    ++position_;
    if (!Row(position_)) at_ = At::kAfter;
  }

  int64_t Count() override {
    if (total_) return *total_;
    if (auto known = KnownCount(sql_)) return *(total_ = known);
    const int64_t rows = engine().Count(sql_);
    Observe();
    total_ = rows;
    RememberCount(sql_, rows);
    return rows;
  }

  bool FindFirst(const BoundCriteria& criteria) override {
    if (whole_) {
      for (size_t row = 0; row < head_.size(); ++row) {
        if (criteria.Accepts(head_[row])) return Land(static_cast<int64_t>(row));
      }
      return false;
    }
    db::Cursor& cursor = Restart();
    RewindOnExit rewind(&cursor);
    const auto value_of = [&cursor](size_t column) { return cursor.Value(column); };
    for (int64_t row = 0; cursor.Next(); ++row) {
      if (criteria.AcceptsValues(value_of)) {
        auto values = ReadRow(cursor);
        Observe();
        window_start_ = row;
        window_.assign(1, std::move(values));
        return Land(row);
      }
    }
    Observe();
    return false;
  }

 private:
  bool Land(int64_t row) {
    at_ = At::kRow;
    position_ = row;
    return true;
  }

  void Drop() override {
    if (whole_) return;  // a result read whole never reads again
    head_.clear();
    window_.clear();
    total_.reset();
    empty_.reset();
  }

  // The cursor, back before its first row.
  db::Cursor& Restart() {
    if (!cursor_ || !cursor_->Rewind()) cursor_ = engine().Query(sql_);
    return *cursor_;
  }

  // Row `index` of the result, or nullptr past its end.
  const std::vector<Variant>* Row(int64_t index) {
    if (index < 0) return nullptr;
    if (static_cast<size_t>(index) < head_.size()) return &head_[static_cast<size_t>(index)];
    if (whole_ || (total_ && index >= *total_)) return nullptr;
    if (index < window_start_ || index >= window_start_ + static_cast<int64_t>(window_.size())) {
      Fetch(index);
    }
    if (index >= window_start_ && index < window_start_ + static_cast<int64_t>(window_.size())) {
      return &window_[static_cast<size_t>(index - window_start_)];
    }
    return nullptr;
  }

  // Reads the rows from `index` on into the window.
  void Fetch(int64_t index) {
    db::Cursor& cursor = Restart();
    RewindOnExit rewind(&cursor);
    int64_t passed = 0;
    bool ended = false;
    while (passed < index && !ended) {
      if (cursor.Next()) {
        ++passed;
      } else {
        ended = true;
      }
    }
    std::vector<std::vector<Variant>> rows;
    while (!ended && rows.size() < chunk_) {
      if (cursor.Next()) {
        rows.push_back(ReadRow(cursor));
      } else {
        ended = true;
      }
    }
    Observe();
    if (ended) total_ = passed + static_cast<int64_t>(rows.size());
    window_start_ = index;
    window_ = std::move(rows);
    chunk_ = std::min(chunk_ * 2, kMostChunkRows);
  }

  String sql_;
  std::unique_ptr<db::Cursor> cursor_;
  std::vector<std::vector<Variant>> head_;
  bool whole_ = false;  // head_ holds every row
  int64_t window_start_ = 0;
  std::vector<std::vector<Variant>> window_;
  size_t chunk_ = kFirstChunkRows;
  std::optional<int64_t> total_;
  std::optional<bool> empty_;
  At at_ = At::kRow;  // on row position_: the first row when opened, whichever that is
  int64_t position_ = 0;
};

// The rows of a whole table, by key in the table's own order: the first, the
// last, the neighbours of a row and the rows a find looks for are each read
// by a statement of their own, and the count comes from the engine.
class TableRows final : public LazyRows {
 public:
  TableRows(ConnectionState& connection, std::unique_ptr<db::Table> table, String count_sql)
      : LazyRows(connection), table_(std::move(table)), count_sql_(std::move(count_sql)) {
    ReadFirst();
  }

  bool Empty() override { return !First(); }
  bool AtEnd() override { return Empty() || at_ == At::kAfter; }

  const std::vector<Variant>* Current() override {
    if (at_ == At::kFirst) return First() ? &first_->values : nullptr;
    if (at_ == At::kLast) ReadLast();
    return at_ == At::kRow ? &current_.values : nullptr;
  }

  // Neither move reads: MoveLast, MoveFirst reads nothing.
  void MoveFirst() override { at_ = At::kFirst; }
  void MoveLast() override { at_ = At::kLast; }

  void MoveNext() override {
    if (at_ == At::kFirst) {
      if (!First()) {
        at_ = At::kAfter;
        return;
      }
      Land(first_);
      ahead_.clear();
      ahead_to_end_ = false;
    }
    if (at_ != At::kRow) {
      at_ = At::kAfter;
      return;
    }
    if (ahead_.empty() && !ahead_to_end_) ReadAhead();
    if (ahead_.empty()) {
      at_ = At::kAfter;
      return;
    }
    current_ = std::move(ahead_.front());
    ahead_.pop_front();
  }

  int64_t Count() override {
    if (count_) return *count_;
    if (auto known = KnownCount(count_sql_)) return *(count_ = known);
    const int64_t rows = table_->Count();
    Observe();
    count_ = rows;
    RememberCount(count_sql_, rows);
    return rows;
  }

  bool FindFirst(const BoundCriteria& criteria) override {
    // The engine looks for the leading text comparisons; every row it finds
    // is still read against all of them, in order.
    const auto conditions = criteria.EngineConditions();
    auto cursor = conditions.empty() ? table_->Rows(std::nullopt) : table_->Matching(conditions);
    const auto value_of = [&cursor](size_t column) { return cursor->Value(column); };
    std::optional<KeyedRow> found;
    while (cursor->Next()) {
      if (criteria.AcceptsValues(value_of)) {
        found = Read(*cursor);
        break;
      }
    }
    cursor.reset();
    Observe();
    if (!found) return false;
    Land(found);
    ahead_.clear();
    ahead_to_end_ = false;
    return true;
  }

 private:
  struct KeyedRow {
    int64_t key = 0;
    std::vector<Variant> values;
  };

  static KeyedRow Read(const db::TableCursor& cursor) { return {cursor.Key(), ReadRow(cursor)}; }

  void Land(const std::optional<KeyedRow>& row) {
    if (row) {
      current_ = *row;
      at_ = At::kRow;
    } else {
      at_ = At::kAfter;
    }
  }

  void Drop() override {
    first_.reset();
    first_known_ = false;
    count_.reset();
    ahead_.clear();
    ahead_to_end_ = false;
  }

  // The first row, read when not known.
  const std::optional<KeyedRow>& First() {
    if (!first_known_) ReadFirst();
    return first_;
  }

  void ReadFirst() {
    auto cursor = table_->Rows(std::nullopt);
    std::optional<KeyedRow> first;
    if (cursor->Next()) first = Read(*cursor);
    cursor.reset();
    Observe();
    first_ = std::move(first);
    first_known_ = true;
  }

  void ReadLast() {
    auto cursor = table_->Last();
    std::optional<KeyedRow> last;
    if (cursor->Next()) last = Read(*cursor);
    cursor.reset();
    Observe();
    Land(last);
    ahead_.clear();
    ahead_to_end_ = true;
  }

  void ReadAhead() {
    auto cursor = table_->Rows(current_.key);
    std::deque<KeyedRow> rows;
    bool ended = false;
    while (rows.size() < kAheadRows) {
      if (!cursor->Next()) {
        ended = true;
        break;
      }
      rows.push_back(Read(*cursor));
    }
    cursor.reset();
    Observe();
    ahead_ = std::move(rows);
    ahead_to_end_ = ended;
  }

  std::unique_ptr<db::Table> table_;
  String count_sql_;
  std::optional<KeyedRow> first_;
  bool first_known_ = false;
  std::optional<int64_t> count_;
  At at_ = At::kFirst;
  KeyedRow current_;
  std::deque<KeyedRow> ahead_;  // the rows right after the current one
  bool ahead_to_end_ = false;   // and nothing after them
};

}  // namespace

std::optional<int64_t> ConnectionState::KnownCount(
    const String& sql, const std::optional<db::DataVersion>& version) const {
  if (!version) return std::nullopt;
  const auto found = counts_.find(sql);
  if (found == counts_.end() || found->second.version != *version) return std::nullopt;
  return found->second.rows;
}

void ConnectionState::RememberCount(const String& sql,
                                    const std::optional<db::DataVersion>& version, int64_t rows) {
  if (!version) return;
  if (counts_.size() >= kMostCounts && !counts_.contains(sql)) counts_.clear();
  counts_.insert_or_assign(sql, Counted{*version, rows});
}

OpenedRows OpenStatement(ConnectionState& connection, StringView sql) {
  auto cursor = connection.engine->Query(sql);
  OpenedRows opened{cursor->Columns(), nullptr};
  if (connection.engine->RepeatsRowOrder()) {
    opened.rows = std::make_unique<QueryRows>(connection, String(sql), std::move(cursor));
  } else {
    opened.rows = std::make_unique<LoadedRows>(*cursor);
  }
  return opened;
}

OpenedRows OpenWholeTable(ConnectionState& connection, StringView table) {
  const String sql = SelectAllFrom(table);
  if (auto keyed = connection.engine->OpenTable(table)) {
    OpenedRows opened{keyed->Columns(), nullptr};
    opened.rows = std::make_unique<TableRows>(connection, std::move(keyed), sql);
    return opened;
  }
  return OpenStatement(connection, sql);
}

OpenedRows OpenLoaded(ConnectionState& connection, StringView sql) {
  auto cursor = connection.engine->Query(sql);
  OpenedRows opened{cursor->Columns(), nullptr};
  opened.rows = std::make_unique<LoadedRows>(*cursor);
  return opened;
}

}  // namespace kavrin::detail
