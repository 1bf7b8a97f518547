#include "db/odbc/PostgresTable.h"

#include <functional>

#include "kavrin/Convert.h"
#include "kavrin/Error.h"

namespace kavrin::db::odbc {

namespace {

// Rows asked for by the first statement of a cursor, growing fourfold with
// each further one up to the most. One at first: a table opened whole is
// mostly asked only whether it holds a row, and a search for its first match.
constexpr size_t kFirstPageRows = 1;
constexpr size_t kMostPageRows = 4096;
// Tables remembered per connection.
constexpr size_t kMostShapes = 256;
// How far back from the end of the table the last row is first looked for,
// in pages, and the factor each further look widens that by.
constexpr int64_t kFirstLastPages = 1;
constexpr int64_t kLastPagesFactor = 64;
constexpr int64_t kMostLastPages = int64_t{1} << 32;

// A name the server reads unquoted, as it reads it in SELECT * FROM name.
bool IsPlainName(StringView name) {
  if (name.empty() || (name[0] >= u'0' && name[0] <= u'9')) return false;
  for (char16_t c : name) {
    const bool word = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') ||
                      (c >= u'0' && c <= u'9') || c == u'_' || c == u'$' || c == u'.' || c >= 0x80;
    if (!word || (c >= 0xD800 && c <= 0xDFFF)) return false;
  }
  return true;
}

// `text` between `quote`s, a quote inside doubled: a literal of a session
// with standard_conforming_strings on ('), or a quoted name (").
String Enclosed(StringView text, char16_t quote) {
  String quoted(1, quote);
  for (char16_t c : text) {
    quoted.push_back(c);
    if (c == quote) quoted.push_back(quote);
  }
  return quoted + quote;
}

String Literal(StringView text) {
  return Enclosed(text, u'\'');
}

String QuotedName(StringView name) {
  return Enclosed(name, u'"');
}

// Whether the server can be handed `text` as a literal: no NUL, no lone
// surrogate.
bool Sendable(StringView text) {
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c == 0) return false;
    if (c >= 0xD800 && c <= 0xDBFF) {
      if (i + 1 >= text.size() || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF) return false;
      ++i;
    } else if (c >= 0xDC00 && c <= 0xDFFF) {
      return false;
    }
  }
  return true;
}

// A ctid "(block,offset)" as one number growing along the table's order,
// and back.
int64_t KeyOf(const Variant& ctid) {
  const String text = ToString(ctid);
  int64_t block = 0;
  int64_t offset = 0;
  int64_t* part = &block;
  for (char16_t c : text) {
    if (c >= u'0' && c <= u'9') {
      *part = *part * 10 + (c - u'0');
    } else if (c == u',') {
      part = &offset;
    }
  }
  return block << 16 | (offset & 0xFFFF);
}

String TidOf(int64_t key) {
  return Literal(
      FromUtf8("(" + std::to_string(key >> 16) + "," + std::to_string(key & 0xFFFF) + ")"));
}

// The rows of a keyed statement read page by page: each page is one
// statement, read whole and let go of, and the next one starts after the
// last key read. `text(after, limit)` is the statement for up to `limit`
// rows after key `after` (from the first without one).
class PagedCursor final : public TableCursor {
 public:
  using Text = std::function<String(std::optional<int64_t>, size_t)>;

  PagedCursor(Connection& connection, std::shared_ptr<const PostgresShape> shape, Text text,
              std::optional<int64_t> after, size_t most_rows)
      : connection_(connection),
        shape_(std::move(shape)),
        text_(std::move(text)),
        after_(after),
        limit_(std::min(kFirstPageRows, most_rows)),
        most_rows_(most_rows) {}

  const std::vector<ColumnInfo>& Columns() const override { return shape_->columns; }

  bool Next() override {
    if (next_ < keys_.size()) {
      current_ = next_++;
      return true;
    }
    if (ended_) return false;
    ReadPage();
    if (keys_.empty()) return false;
    current_ = next_++;
    return true;
  }

  Variant Value(size_t index) const override { return rows_.at(current_).at(index); }
  int64_t Key() const override { return keys_.at(current_); }

  // Whether `columns` are the key and the table's columns as learnt.
  bool SameColumns(const std::vector<ColumnInfo>& columns) const {
    if (columns.size() != shape_->columns.size() + 1) return false;
    for (size_t i = 0; i < shape_->columns.size(); ++i) {
      if (columns[i + 1].name != shape_->columns[i].name ||
          columns[i + 1].type != shape_->columns[i].type) {
        return false;
      }
    }
    return true;
  }

  // Reads the first page now; answers whether it holds a row.
  bool Peek() {
    if (keys_.empty() && !ended_) ReadPage();
    return !keys_.empty();
  }

 private:
  void ReadPage() {
    auto cursor = connection_.Query(text_(after_, limit_));
    keys_.clear();
    rows_.clear();
    const size_t width = shape_->columns.size();
    if (!SameColumns(cursor->Columns())) {
      throw Error(errors::kProviderSyntax, u"Kavrin.ODBC",
                  u"The columns of table " + shape_->name + u" changed while it was read.");
    }
    while (cursor->Next()) {
      keys_.push_back(KeyOf(cursor->Value(0)));
      std::vector<Variant> row;
      row.reserve(width);
      for (size_t i = 1; i <= width; ++i)
        row.push_back(cursor->Value(i));
      rows_.push_back(std::move(row));
    }
    ended_ = keys_.size() < limit_ || keys_.size() >= most_rows_;
    if (!keys_.empty()) after_ = keys_.back();
    limit_ = std::min(limit_ * 4, kMostPageRows);
    next_ = 0;
  }

  Connection& connection_;
  std::shared_ptr<const PostgresShape> shape_;
  Text text_;
  std::optional<int64_t> after_;
  size_t limit_;
  size_t most_rows_;
  bool ended_ = false;
  std::vector<int64_t> keys_;
  std::vector<std::vector<Variant>> rows_;
  size_t next_ = 0;
  size_t current_ = 0;
};

class PostgresTable final : public Table {
 public:
  PostgresTable(Connection& connection, std::shared_ptr<const PostgresShape> shape)
      : connection_(connection), shape_(std::move(shape)) {}

  const std::vector<ColumnInfo>& Columns() const override { return shape_->columns; }

  // No ORDER BY: the server reads the pages from the first, or from the
  // key's, in order, and stops at the limit.
  // Reads the first rows now, which the first read from the start then
  // answers. Throws when the table no longer has the columns learnt.
  void ReadFirstRows() {
    first_rows_ = Rows(std::nullopt);
    static_cast<PagedCursor&>(*first_rows_).Peek();
  }

  std::unique_ptr<TableCursor> Rows(std::optional<int64_t> after_key) override {
    if (!after_key && first_rows_) return std::move(first_rows_);
    const String select = Select();
    return Paged(
        [select](std::optional<int64_t> after, size_t limit) {
          return select + (after ? u" WHERE ctid > " + TidOf(*after) : String()) + Limit(limit);
        },
        after_key);
  }

  // The last row is on one of the last pages: the look back widens until it
  // finds a row or covers the whole table.
  std::unique_ptr<TableCursor> Last() override {
    for (int64_t pages = kFirstLastPages;; pages *= kLastPagesFactor) {
      const bool whole = pages >= kMostLastPages;
      const String text =
          Select() +
          (whole ? String()
                 : u" WHERE ctid >= (SELECT pg_catalog.format('(%s,0)', GREATEST("
                   u"pg_catalog.pg_relation_size(" +
                       Literal(shape_->name) +
                       u"::regclass) / pg_catalog.current_setting('block_size')::bigint - " +
                       FromUtf8(std::to_string(pages)) + u", 0))::tid)") +
          u" ORDER BY ctid DESC" + Limit(1);
      auto cursor = std::make_unique<PagedCursor>(
          connection_, shape_, [text](std::optional<int64_t>, size_t) { return text; },
          std::nullopt, 1);
      if (cursor->Peek() || whole) return cursor;
    }
  }

  // Only equalities on columns whose collation is at least as lenient as the
  // kit's go to the server: every row it leaves out is one the kit's own
  // comparison would refuse, and the rows it finds are still checked by the
  // caller.
  std::unique_ptr<TableCursor> Matching(const std::vector<TextCondition>& conditions) override {
    String where;
    for (const TextCondition& c : conditions) {
      if (!c.equal || c.column >= shape_->columns.size() || !shape_->case_insensitive[c.column] ||
          !Sendable(c.text)) {
        continue;
      }
      where += (where.empty() ? u" WHERE " : u" AND ") +
               QuotedName(shape_->columns[c.column].name) + u" = " + Literal(c.text);
    }
    if (where.empty()) return Rows(std::nullopt);
    const String select = Select() + where;
    return Paged(
        [select](std::optional<int64_t> after, size_t limit) {
          return select + (after ? u" AND ctid > " + TidOf(*after) : String()) + u" ORDER BY ctid" +
                 Limit(limit);
        },
        std::nullopt);
  }

  int64_t Count() override {
    auto cursor = connection_.Query(u"SELECT pg_catalog.count(*) FROM " + shape_->name);
    return cursor->Next() ? static_cast<int64_t>(ToDouble(cursor->Value(0))) : 0;
  }

 private:
  static String Limit(size_t rows) { return u" LIMIT " + FromUtf8(std::to_string(rows)); }
  String Select() const { return u"SELECT ctid, * FROM " + shape_->name; }

  std::unique_ptr<TableCursor> Paged(PagedCursor::Text text, std::optional<int64_t> after) {
    return std::make_unique<PagedCursor>(connection_, shape_, std::move(text), after, SIZE_MAX);
  }

  Connection& connection_;
  std::shared_ptr<const PostgresShape> shape_;
  std::unique_ptr<TableCursor> first_rows_;
};

}  // namespace

// A table is opened with its first rows read, which shows whether what was
// learnt of it still holds: a table dropped, changed or replaced since is
// learnt again, once.
std::unique_ptr<Table> PostgresTables::Open(StringView name) {
  String key(name);
  for (char16_t& c : key) {
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c - u'A' + u'a');
  }
  for (int attempt = 0;; ++attempt) {
    auto found = shapes_.find(key);
    if (found == shapes_.end()) {
      if (shapes_.size() >= kMostShapes) shapes_.clear();
      found = shapes_.emplace(key, Learn(name)).first;
    }
    if (!found->second) return nullptr;
    auto table = std::make_unique<PostgresTable>(connection_, found->second);
    try {
      table->ReadFirstRows();
      return table;
    } catch (const Error&) {
      shapes_.erase(key);
      if (attempt > 0) throw;
    }
  }
}

std::shared_ptr<const PostgresShape> PostgresTables::Learn(StringView name) {
  if (!IsPlainName(name)) return nullptr;
  // An ordinary table's columns, each with whether its collation ignores
  // letter case (an ICU collation at primary or secondary strength).
  auto catalog = connection_.Query(
      u"SELECT a.attname, coalesce(NOT co.collisdeterministic AND coalesce("
      u"pg_catalog.to_jsonb(co) ->> 'colliculocale', pg_catalog.to_jsonb(co) ->> 'colllocale', "
      u"co.collcollate) ~ 'ks-level[12]', false) FROM pg_catalog.pg_class c "
      u"JOIN pg_catalog.pg_attribute a ON a.attrelid = c.oid AND a.attnum > 0 AND NOT "
      u"a.attisdropped LEFT JOIN pg_catalog.pg_collation co ON co.oid = a.attcollation "
      u"WHERE c.oid = pg_catalog.to_regclass(" +
      Literal(name) + u") AND c.relkind = 'r' ORDER BY a.attnum");
  auto shape = std::make_shared<PostgresShape>();
  shape->name = String(name);
  while (catalog->Next())
    shape->case_insensitive.push_back(IsTrueCondition(catalog->Value(1)));
  if (shape->case_insensitive.empty()) return nullptr;
  // The columns exactly as SELECT * FROM name describes them.
  shape->columns = connection_.Query(u"SELECT * FROM " + shape->name + u" LIMIT 0")->Columns();
  if (shape->columns.size() != shape->case_insensitive.size()) return nullptr;
  return shape;
}

}  // namespace kavrin::db::odbc
