#include "db/Collation.h"
#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "platform/Criteria.h"
#include "platform/State.h"

namespace kavrin {

namespace {

const String kKitSource = u"KitDatabase";
constexpr int32_t kUnknownColumn = 3070;
constexpr int32_t kCriteriaTypeMismatch = 3464;

[[noreturn]] void CriteriaTypeMismatch() {
  throw Error(kCriteriaTypeMismatch, u"KitRecordset",
              u"Data type mismatch in criteria expression.");
}

// A column value as the server holds it for a numeric comparison: a bit is
// 1 or 0, a date its serial number.
double AsServerNumber(const Variant& value) {
  if (value.type() == VarType::Boolean) return value.AsBoolean() ? 1.0 : 0.0;
  if (value.IsString()) {
    double number = 0;
    if (!TryParseNumber(value.AsString(), number)) CriteriaTypeMismatch();
    return number;
  }
  return ToDouble(value);
}

bool Satisfies(const Variant& value, const detail::Comparison& comparison,
               const db::Collation& collation) {
  if (value.IsNull() || value.IsEmpty()) return false;
  bool equal = false;
  if (comparison.literal.IsString() && value.IsString()) {
    equal = collation.Equal(value.AsString(), comparison.literal.AsString());
  } else {
    equal = AsServerNumber(value) == AsServerNumber(comparison.literal);
  }
  return equal == comparison.equal;
}

std::shared_ptr<ado::Recordset> EmptyRecordset() {
  auto recordset = std::make_shared<ado::Recordset>();
  recordset->CursorLocation(ado::adUseClient);
  auto& state = *recordset->state();
  state.open = true;
  state.counts_rows = true;
  return recordset;
}

}  // namespace

// ---- KitRecordset ----

KitRecordset::KitRecordset() : recordset_(EmptyRecordset()) {}
KitRecordset::KitRecordset(std::shared_ptr<ado::Recordset> recordset)
    : recordset_(std::move(recordset)) {}
KitRecordset::~KitRecordset() = default;

bool KitRecordset::Bof() const {
  return recordset_->Bof();
}
bool KitRecordset::Eof() const {
  return recordset_->Eof();
}
ado::Fields KitRecordset::Fields() const {
  return recordset_->Fields();
}
int32_t KitRecordset::RecordCount() const {
  recordset_->state()->RequireOpen();
  return static_cast<int32_t>(recordset_->state()->rows.size());
}
void KitRecordset::Close() {
  recordset_->Close();
}
void KitRecordset::MoveFirst() {
  recordset_->MoveFirst();
}
void KitRecordset::MoveLast() {
  recordset_->MoveLast();
}
void KitRecordset::MoveNext() {
  recordset_->MoveNext();
}

void KitRecordset::FindFirst(StringView criteria) {
  auto& state = *recordset_->state();
  state.RequireOpen();
  const auto comparisons = detail::ParseCriteria(criteria);
  struct Bound {
    size_t column;
    db::Collation collation;
    const detail::Comparison* comparison;
  };
  std::vector<Bound> bound;
  for (const auto& comparison : comparisons) {
    const auto column = state.ColumnIndex(comparison.column);
    if (!column) {
      throw Error(kUnknownColumn, u"KitRecordset",
                  u"The kit does not recognize '" + comparison.column +
                      u"' as a valid field name or expression.");
    }
    const auto collation = db::CollationFromName(state.columns[*column].collation);
    bound.push_back({*column, collation.value_or(db::kDefaultCollation), &comparison});
  }
  for (size_t row = 0; row < state.rows.size(); ++row) {
    bool all = true;
    for (const auto& b : bound) {
      if (!Satisfies(state.rows[row][b.column], *b.comparison, b.collation)) {
        all = false;
        break;
      }
    }
    if (all) {
      state.position = static_cast<int64_t>(row);
      no_match_ = false;
      return;
    }
  }
  no_match_ = true;
}

// ---- KitDatabase ----

KitDatabase::KitDatabase() = default;

KitDatabase::KitDatabase(StringView connection_string) {
  auto state = std::make_shared<detail::ConnectionState>();
  state->engine = db::Open(connection_string);
  connection_ = std::make_shared<ado::Connection>(std::move(state));
}

KitDatabase::~KitDatabase() = default;

std::shared_ptr<ado::Connection> KitDatabase::Connection() const {
  if (!connection_) throw Error::Standard(errors::kNoConnection, kKitSource);
  return connection_;
}

std::shared_ptr<KitRecordset> KitDatabase::OpenQuery(StringView source, const Variant& type,
                                                     const Variant&, const Variant&,
                                                     const Variant&) {
  if (!connection_) throw Error::Standard(errors::kNoConnection, kKitSource);
  if (!type.IsNumeric() && !type.IsString()) throw Error::Runtime(errors::kTypeMismatch);
  ToLong(type);  // a type that is not a number fails as the kit's argument check does
  const String sql =
      detail::IsBareTableName(source) ? detail::SelectAllFrom(source) : String(source);
  auto cursor = connection_->state().Query(source, sql);
  auto recordset = std::make_shared<ado::Recordset>();
  recordset->CursorLocation(ado::adUseClient);
  recordset->state()->Load(*cursor);
  recordset->state()->counts_rows = true;
  return std::make_shared<KitRecordset>(std::move(recordset));
}

}  // namespace kavrin
