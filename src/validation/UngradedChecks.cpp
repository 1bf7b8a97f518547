// CheckDirNoGrade and CheckInv: is a typed code or name a row of a flat
// archive (inventory, vendors, customers, warehouses, persons)?
//
// Both first open the whole archive to see whether it has rows, then ask by
// code and, when that finds nothing, by name. The latest query stays open in
// the lookup record set.
#include "data/Access.h"
#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

namespace {

struct FlatArchive {
  int16_t type;
  const char16_t* table;
  const char16_t* code_query;
  const char16_t* name_query;
  const char16_t* name_column;
  const char16_t* code_column;
};

// Vendors are named by their abbreviated names. Customers are found by code
// only: their name step asks by code once more, while a name answer is still
// the abbreviated name.
constexpr FlatArchive kFlatArchives[] = {
    {0, u"Inventory", u"select * from inventory where cinvcode='",
     u"select * from inventory where cinvname='", u"cInvName", u"cInvCode"},
    {1, u"Vendor", u"select * from vendor where cvencode='",
     u"select * from vendor where cvenabbname='", u"cVenAbbName", u"cVenCode"},
    {2, u"Customer", u"select * from customer where ccuscode='",
     u"select * from customer where ccuscode='", u"cCusAbbName", u"cCusCode"},
    {3, u"Warehouse", u"select * from warehouse where cwhcode='",
     u"select * from warehouse where cwhname='", u"cWhName", u"cWhCode"},
    {5, u"Person", u"select * from person where cpersoncode='",
     u"select * from person where cpersonname='", u"cPersonName", u"cPersonCode"},
};

const FlatArchive& kInventory = kFlatArchives[0];

const FlatArchive* FlatArchiveOfType(int16_t type) {
  for (const auto& archive : kFlatArchives) {
    if (archive.type == type) return &archive;
  }
  return nullptr;
}

// The current row's name or code, as stored. Both columns must exist; only
// the one answered is read, so a Null in the other is harmless.
String RowAnswer(const KitRecordset& rs, const FlatArchive& archive, bool IsReturnName) {
  const ado::Fields fields = rs.AdoRecordset()->Fields();
  const ado::Field name = fields.Item(archive.name_column);
  const ado::Field code = fields.Item(archive.code_column);
  return ToString((IsReturnName ? name : code).Value());
}

// Asks by code, then by name, into the lookup record set, which each query
// replaces without closing. A code match is answered from `code_answer_row`
// when given, else from the code query's own row.
String CodeThenName(KitDatabase& db, std::shared_ptr<KitRecordset>& lookup,
                    const FlatArchive& archive, const String& cString, bool IsReturnName,
                    const KitRecordset* code_answer_row) {
  lookup = data::OpenKit(db, archive.code_query + cString + u"'");
  if (lookup->RecordCount() != 0) {
    return RowAnswer(code_answer_row ? *code_answer_row : *lookup, archive, IsReturnName);
  }
  lookup = data::OpenKit(db, archive.name_query + cString + u"'");
  if (lookup->RecordCount() != 0) return RowAnswer(*lookup, archive, IsReturnName);
  return {};
}

}  // namespace

String clsPub::CheckDirNoGrade(const String& cString, int16_t iType, bool IsReturnName) {
  const detail::CallReads reads(dbia_);
  if (Trim(cString).empty()) return {};
  const FlatArchive* archive = FlatArchiveOfType(iType);
  // An archive type not served here opens nothing: the unopened record set
  // holds no row and the answer is empty.
  auto table =
      archive ? data::OpenKit(Database(), archive->table) : std::make_shared<KitRecordset>();
  if (data::HoldsNoRow(*table)) {
    table->Close();
    return {};
  }
  String answer;
  if (archive)
    answer = CodeThenName(Database(), Lookup(), *archive, cString, IsReturnName, nullptr);
  table->Close();
  return answer;
}

String clsPub::CheckInv(const String& cString, bool IsReturnName) {
  const detail::CallReads reads(dbia_);
  if (Trim(cString).empty()) return {};
  auto table = data::OpenKit(Database(), kInventory.table);
  // Only whether the inventory has a row matters here: the record set knows
  // that from its first row, without counting the archive.
  if (data::HoldsNoRow(*table)) {
    table->Close();
    return {};
  }
  // A code that exists is answered from the current row of the whole
  // inventory table, its first row, whichever item the code belongs to.
  const String answer =
      CodeThenName(Database(), Lookup(), kInventory, cString, IsReturnName, table.get());
  table->Close();
  return answer;
}

}  // namespace kavrin
