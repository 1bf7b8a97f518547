#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "platform/Criteria.h"
#include "platform/State.h"

namespace kavrin {

namespace {

const String kKitSource = u"KitDatabase";

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
  return static_cast<int32_t>(recordset_->state()->Count());
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
  const detail::BoundCriteria bound(criteria, state.columns);
  no_match_ = !(state.rows && state.rows->FindFirst(bound));
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
  auto& connection = connection_->state();
  connection.Trace(source);
  auto recordset = std::make_shared<ado::Recordset>();
  recordset->CursorLocation(ado::adUseClient);
  recordset->state()->Assign(detail::IsBareTableName(source)
                                 ? detail::OpenWholeTable(connection, source)
                                 : detail::OpenStatement(connection, source));
  recordset->state()->counts_rows = true;
  return std::make_shared<KitRecordset>(std::move(recordset));
}

namespace detail {

std::shared_ptr<KitRecordset> OpenFullyLoaded(KitDatabase& db, StringView source) {
  auto recordset = std::make_shared<ado::Recordset>();
  recordset->CursorLocation(ado::adUseClient);
  recordset->state()->Assign(OpenLoaded(
      db.Connection()->state(), IsBareTableName(source) ? SelectAllFrom(source) : String(source)));
  recordset->state()->counts_rows = true;
  return std::make_shared<KitRecordset>(std::move(recordset));
}

}  // namespace detail
}  // namespace kavrin
