#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/KitDatabase.h"
#include "platform/Access.h"
#include "platform/CallReads.h"
#include "platform/Criteria.h"

namespace kavrin {

namespace {

constexpr StringView kKitSource = sources::kKitDatabase;

std::shared_ptr<ado::Recordset> EmptyRecordset() {
  auto recordset = std::make_shared<ado::Recordset>();
  recordset->CursorLocation(ado::adUseClient);
  auto& state = detail::Access::State(*recordset);
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
  const auto& state = detail::Access::State(*recordset_);
  state.RequireOpen();
  return static_cast<int32_t>(state.Count());
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
  auto& state = detail::Access::State(*recordset_);
  state.RequireOpen();
  const detail::BoundCriteria bound(criteria, state.columns);
  no_match_ = !(state.rows && state.rows->FindFirst(bound));
}

// ---- KitDatabase ----

KitDatabase::KitDatabase() = default;

KitDatabase::KitDatabase(StringView connection_string) {
  auto state = std::make_shared<detail::ConnectionState>();
  state->engine = db::Open(connection_string);
  connection_ = detail::Access::MakeConnection(std::move(state));
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
  auto& connection = detail::Access::State(*connection_);
  connection.Trace(source);
  auto recordset = std::make_shared<ado::Recordset>();
  recordset->CursorLocation(ado::adUseClient);
  auto& state = detail::Access::State(*recordset);
  state.Assign(detail::IsBareTableName(source) ? detail::OpenWholeTable(connection, source)
                                               : detail::OpenStatement(connection, source));
  state.counts_rows = true;
  return std::make_shared<KitRecordset>(std::move(recordset));
}

namespace detail {

CallReads::CallReads(const std::shared_ptr<KitDatabase>& dbia) {
  if (!dbia || !dbia->IsConnected()) return;
  auto& state = Access::State(*dbia->Connection());
  if (!state.engine) return;
  state.engine->BeginReads();
  connection_ = state.shared_from_this();
}

CallReads::~CallReads() {
  if (connection_ && connection_->engine) connection_->engine->EndReads();
}

std::shared_ptr<KitRecordset> OpenFullyLoaded(KitDatabase& db, StringView source) {
  auto recordset = std::make_shared<ado::Recordset>();
  recordset->CursorLocation(ado::adUseClient);
  auto& state = Access::State(*recordset);
  state.Assign(OpenLoaded(Access::State(*db.Connection()),
                          IsBareTableName(source) ? SelectAllFrom(source) : String(source)));
  state.counts_rows = true;
  return std::make_shared<KitRecordset>(std::move(recordset));
}

}  // namespace detail
}  // namespace kavrin
