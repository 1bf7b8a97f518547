#include "db/sqlite/KeyedTable.h"

namespace kavrin::db::sqlite {

namespace {

// The rows of a keyed statement: the key first, then the table's columns.
class SqliteTableCursor final : public TableCursor {
 public:
  SqliteTableCursor(sqlite3* db, std::shared_ptr<Watchdog> watchdog, Statement stmt,
                    std::shared_ptr<const TableShape> shape)
      : rows_(db, std::move(watchdog), std::move(stmt)), shape_(std::move(shape)) {}

  const std::vector<ColumnInfo>& Columns() const override { return shape_->columns; }
  bool Next() override { return rows_.Next(); }
  Variant Value(size_t index) const override {
    return ReadValue(rows_.get(), static_cast<int>(index) + 1, shape_->columns[index].type,
                     shape_->utf8);
  }
  int64_t Key() const override { return sqlite3_column_int64(rows_.get(), 0); }

 private:
  SteppedStatement rows_;
  std::shared_ptr<const TableShape> shape_;
};

std::string QuotedIdentifier(StringView name) {
  std::string quoted = "\"";
  for (char c : ToUtf8(name)) {
    quoted.push_back(c);
    if (c == '"') quoted.push_back('"');
  }
  quoted.push_back('"');
  return quoted;
}

class SqliteTable final : public Table {
 public:
  SqliteTable(sqlite3* db, std::shared_ptr<Watchdog> watchdog,
              std::shared_ptr<const TableShape> shape, std::shared_ptr<StatementCache> cache)
      : db_(db),
        watchdog_(std::move(watchdog)),
        shape_(std::move(shape)),
        cache_(std::move(cache)) {}

  const std::vector<ColumnInfo>& Columns() const override { return shape_->columns; }

  std::unique_ptr<TableCursor> Rows(std::optional<int64_t> after_key) override {
    auto stmt = Prepare(after_key ? Select() + " WHERE " + shape_->key + " > ?1" + InOrder()
                                  : Select() + InOrder());
    if (after_key) sqlite3_bind_int64(stmt.get(), 1, *after_key);
    return Wrap(std::move(stmt));
  }

  std::unique_ptr<TableCursor> Last() override {
    return Wrap(Prepare(Select() + " ORDER BY " + shape_->key + " DESC LIMIT 1"));
  }

  std::unique_ptr<TableCursor> Matching(const std::vector<TextCondition>& conditions) override {
    std::string sql = Select();
    for (size_t i = 0; i < conditions.size(); ++i) {
      const TextCondition& c = conditions[i];
      sql += i == 0 ? " WHERE " : " AND ";
      sql += QuotedIdentifier(shape_->columns.at(c.column).name);
      sql += c.equal ? " = ?" : " <> ?";
      sql += std::to_string(i + 1) + " COLLATE " + QuotedIdentifier(c.collation);
    }
    auto stmt = Prepare(sql + InOrder());
    for (size_t i = 0; i < conditions.size(); ++i) {
      const String& text = conditions[i].text;
      sqlite3_bind_text16(stmt.get(), static_cast<int>(i + 1), text.data(),
                          static_cast<int>(text.size() * 2), SQLITE_TRANSIENT);
    }
    return Wrap(std::move(stmt));
  }

  int64_t Count() override {
    auto stmt = Prepare("SELECT count(*) FROM " + shape_->name);
    if (!Step(db_, stmt.get(), *watchdog_)) return 0;
    return sqlite3_column_int64(stmt.get(), 0);
  }

 private:
  std::string Select() const { return "SELECT " + shape_->key + ", * FROM " + shape_->name; }
  std::string InOrder() const { return " ORDER BY " + shape_->key; }

  // The statement of `sql`, kept compiled when the connection keeps them.
  Statement Prepare(const std::string& sql) const {
    String key;
    if (cache_) {
      key = FromUtf8(sql);
      if (Statement kept = cache_->Take(key)) return kept;
    }
    sqlite3_stmt* raw = nullptr;
    const int rc = sqlite3_prepare_v3(db_, sql.c_str(), static_cast<int>(sql.size()),
                                      cache_ ? SQLITE_PREPARE_PERSISTENT : 0, &raw, nullptr);
    Statement stmt = cache_ ? cache_->Adopt(key, raw) : Statement(raw);
    if (rc != SQLITE_OK) {
      stmt.get_deleter().home.reset();
      Fail(db_, rc);
    }
    return stmt;
  }

  std::unique_ptr<TableCursor> Wrap(Statement stmt) const {
    return std::make_unique<SqliteTableCursor>(db_, watchdog_, std::move(stmt), shape_);
  }

  sqlite3* db_;
  std::shared_ptr<Watchdog> watchdog_;
  std::shared_ptr<const TableShape> shape_;
  std::shared_ptr<StatementCache> cache_;  // null when statements are compiled each time
};

// The statement of `sql`, or null when it does not compile.
Statement TryPrepare(sqlite3* db, Watchdog& watchdog, const std::string& sql) {
  watchdog.Start();
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v3(db, sql.c_str(), static_cast<int>(sql.size()), 0, &raw, nullptr) !=
      SQLITE_OK) {
    sqlite3_finalize(raw);
    return nullptr;
  }
  return Statement(raw);
}

}  // namespace

std::shared_ptr<const TableShape> ReadTableShape(sqlite3* db, Describer& describer,
                                                 Watchdog& watchdog, StringView name, bool utf8,
                                                 std::optional<DataVersion> version) {
  if (name.find(u'.') != StringView::npos) return nullptr;
  auto shape = std::make_shared<TableShape>();
  shape->utf8 = utf8;
  shape->name = ToUtf8(name);
  auto all = TryPrepare(db, watchdog, "SELECT * FROM " + shape->name);
  if (!all) return nullptr;
  for (int i = 0; i < sqlite3_column_count(all.get()); ++i)
    shape->columns.push_back(describer.Describe(all.get(), i));

  auto plan = TryPrepare(db, watchdog, "EXPLAIN QUERY PLAN SELECT * FROM " + shape->name);
  if (!plan) return nullptr;
  int steps = 0;
  bool plain_scan = false;
  int rc = SQLITE_ROW;
  while ((rc = sqlite3_step(plan.get())) == SQLITE_ROW) {
    const auto* detail = reinterpret_cast<const char*>(sqlite3_column_text(plan.get(), 3));
    const String text = FromUtf8(detail ? detail : "");
    plain_scan = EqualsNoCase(text, u"SCAN " + String(name)) ||
                 EqualsNoCase(text, u"SCAN TABLE " + String(name));
    ++steps;
  }
  if (rc != SQLITE_DONE || steps != 1 || !plain_scan) return nullptr;

  for (const char* candidate : {"rowid", "_rowid_", "oid"}) {
    bool taken = false;
    for (const auto& column : shape->columns)
      taken = taken || EqualsNoCase(column.name, FromUtf8(candidate));
    if (!taken) {
      shape->key = candidate;
      break;
    }
  }
  if (shape->key.empty() ||
      !TryPrepare(db, watchdog,
                  "SELECT " + shape->key + " FROM " + shape->name + " ORDER BY " + shape->key)) {
    return nullptr;
  }
  shape->verified_at = version;
  return shape;
}

std::unique_ptr<Table> OpenKeyedTable(sqlite3* db, std::shared_ptr<Watchdog> watchdog,
                                      std::shared_ptr<const TableShape> shape,
                                      std::shared_ptr<StatementCache> cache) {
  return std::make_unique<SqliteTable>(db, std::move(watchdog), std::move(shape), std::move(cache));
}

}  // namespace kavrin::db::sqlite
