#include "kavrin/Ado.h"

#include <algorithm>

#include "db/SqlLexer.h"
#include "kavrin/Error.h"
#include "platform/Access.h"

namespace kavrin {

namespace {
constexpr StringView kRecordsetSource = sources::kAdoRecordset;
constexpr StringView kFieldsSource = sources::kAdoFields;
constexpr StringView kFieldSource = sources::kAdoField;
}  // namespace

namespace detail {

std::optional<size_t> RecordsetState::ColumnIndex(StringView name) const {
  for (size_t i = 0; i < columns.size(); ++i) {
    if (EqualsNoCase(columns[i].name, name)) return i;
  }
  return std::nullopt;
}

void RecordsetState::Assign(OpenedRows opened) {
  columns = std::move(opened.columns);
  rows = std::move(opened.rows);
  open = true;
}

void RecordsetState::RequireOpen() const {
  if (!open) throw Error::Standard(errors::kObjectClosed, kRecordsetSource);
}

String SelectAllFrom(StringView table) {
  return u"SELECT * FROM " + String(table);
}

bool IsBareTableName(StringView source) {
  // Words joined by dots (dbo.Inventory), nothing else: no blanks, quotes or
  // operators.
  const auto tokens = db::Tokenize(source, db::kKitProfile);
  const auto is_word = [](const db::SqlToken& token) { return token.kind == db::TokenKind::Word; };
  return !tokens.empty() && is_word(tokens.front()) && is_word(tokens.back()) &&
         std::ranges::all_of(tokens, [&](const db::SqlToken& token) {
           return is_word(token) ||
                  (token.kind == db::TokenKind::Operator && token.In(source) == u".");
         });
}

}  // namespace detail

namespace ado {

// ---- Connection ----

Connection::Connection(std::shared_ptr<detail::ConnectionState> state) : state_(std::move(state)) {}
Connection::~Connection() = default;

void Connection::SetTrace(TraceObserver observer) {
  state_->trace = std::move(observer);
}

// ---- Field / Fields ----

Field::Field(std::shared_ptr<detail::RecordsetState> state, size_t index)
    : state_(std::move(state)), index_(index) {}

String Field::Name() const {
  return state_->columns.at(index_).name;
}

Variant Field::Value() const {
  state_->RequireOpen();
  const auto* row = state_->CurrentRow();
  if (!row) throw Error::Standard(errors::kNoCurrentRecord, kFieldSource);
  return (*row)[index_];
}

Fields::Fields(std::shared_ptr<detail::RecordsetState> state) : state_(std::move(state)) {}

int32_t Fields::Count() const {
  return static_cast<int32_t>(state_->columns.size());
}

Field Fields::Item(StringView name) const {
  if (auto index = state_->ColumnIndex(name)) return Field(state_, *index);
  throw Error::Standard(errors::kItemNotFound, kFieldsSource);
}

Field Fields::Item(int32_t index) const {
  if (index < 0 || static_cast<size_t>(index) >= state_->columns.size()) {
    throw Error::Standard(errors::kItemNotFound, kFieldsSource);
  }
  return Field(state_, static_cast<size_t>(index));
}

// ---- Recordset ----

Recordset::Recordset() : state_(std::make_shared<detail::RecordsetState>()) {}
Recordset::~Recordset() = default;

int32_t Recordset::CursorLocation() const {
  return state_->cursor_location;
}
void Recordset::CursorLocation(int32_t location) {
  state_->cursor_location = location;
}

void Recordset::Open(StringView source, const std::shared_ptr<Connection>& active_connection,
                     int32_t /*cursor_type*/, int32_t /*lock_type*/, int32_t options) {
  if (state_->open) throw Error::Standard(errors::kObjectOpen, kRecordsetSource);
  if (!active_connection) throw Error::Standard(errors::kNoConnection, kRecordsetSource);
  const String sql = options == adCmdTable ? detail::SelectAllFrom(source) : String(source);
  auto& connection = detail::Access::State(*active_connection);
  connection.Trace(source);
  state_->Assign(detail::OpenStatement(connection, sql));
  state_->counts_rows = state_->cursor_location == adUseClient;
}

bool Recordset::Bof() const {
  state_->RequireOpen();
  return state_->Bof();
}

bool Recordset::Eof() const {
  state_->RequireOpen();
  return state_->Eof();
}

ado::Fields Recordset::Fields() const {
  state_->RequireOpen();
  return ado::Fields(state_);
}

void Recordset::MoveNext() {
  state_->RequireOpen();
  if (state_->Eof()) throw Error::Standard(errors::kNoCurrentRecord, kRecordsetSource);
  state_->rows->MoveNext();
}

void Recordset::MoveFirst() {
  state_->RequireOpen();
  if (state_->Bof()) throw Error::Standard(errors::kNoCurrentRecord, kRecordsetSource);
  state_->rows->MoveFirst();
}

void Recordset::MoveLast() {
  state_->RequireOpen();
  if (state_->Bof()) throw Error::Standard(errors::kNoCurrentRecord, kRecordsetSource);
  state_->rows->MoveLast();
}

int32_t Recordset::RecordCount() const {
  state_->RequireOpen();
  return state_->counts_rows ? static_cast<int32_t>(state_->Count()) : -1;
}

void Recordset::Close() {
  state_->open = false;
  state_->rows.reset();
  state_->columns.clear();
}

}  // namespace ado
}  // namespace kavrin
