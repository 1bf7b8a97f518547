// The two ways a member reaches the database: the kit path (a dynaset opened
// through DBIA.OpenQuery) and the direct path (an ADO record set opened on
// DBIA.Connection).
#pragma once

#include <memory>

#include "kavrin/Ado.h"
#include "kavrin/KitDatabase.h"

namespace kavrin::data {

// Opens `source` (a SELECT text or a bare table name) as a dynaset; a query
// that yields no object behaves as an empty record set.
std::shared_ptr<KitRecordset> OpenKit(KitDatabase& db, StringView source);

// Opens `sql` on a new ADO record set over the kit's connection: forward-only,
// read-only, as command text, with a client cursor when asked.
std::shared_ptr<ado::Recordset> OpenDirect(KitDatabase& db, StringView sql, bool client_cursor);

// The value of `column` in the current row, read through AdoRecordset.Fields.
Variant Column(const KitRecordset& rs, StringView column);
Variant Column(const ado::Recordset& rs, StringView column);

// BOF and EOF both true: the record set holds no row. Both flags are read.
bool HoldsNoRow(const KitRecordset& rs);

}  // namespace kavrin::data
