#include "data/Access.h"

namespace kavrin::data {

std::shared_ptr<KitRecordset> OpenKit(KitDatabase& db, StringView source) {
  auto rs = db.OpenQuery(source, int32_t{dbOpenDynaset});
  return rs ? rs : std::make_shared<KitRecordset>();
}

std::shared_ptr<ado::Recordset> OpenDirect(KitDatabase& db, StringView sql, bool client_cursor) {
  auto rs = std::make_shared<ado::Recordset>();
  if (client_cursor) rs->CursorLocation(ado::adUseClient);
  rs->Open(sql, db.Connection(), ado::adOpenForwardOnly, ado::adLockReadOnly, ado::adCmdText);
  return rs;
}

Variant Column(const KitRecordset& rs, StringView column) {
  return rs.AdoRecordset()->Fields().Item(column).Value();
}

Variant Column(const ado::Recordset& rs, StringView column) {
  return rs.Fields().Item(column).Value();
}

bool HoldsNoRow(const KitRecordset& rs) {
  const bool bof = rs.Bof();
  const bool eof = rs.Eof();
  return bof && eof;
}

}  // namespace kavrin::data
