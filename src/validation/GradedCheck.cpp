// CheckDirGrade: is a typed code or name a row of a graded archive, and is it
// an end row when the form demands one?
//
// Receive/dispatch styles and cost objects are searched in the whole table
// they were loaded into; the other graded archives are asked by code, then by
// name, and keep their latest query open in the lookup record set.
#include "data/Access.h"
#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

namespace {

// An archive searched in its loaded table. Criteria are the start text, the
// typed text, a closing quote and, for an end row, the end clause.
struct FoundArchive {
  int16_t type;
  const char16_t* table;
  const char16_t* code_criterion;
  const char16_t* name_criterion;
  const char16_t* end_clause;
  const char16_t* code_column;
  const char16_t* name_column;
};

constexpr FoundArchive kFoundArchives[] = {
    {4, u"Rd_Style", u"cRdCode='", u"cRdName='", u" AND bRdEnd=1", u"cRdCode", u"cRdName"},
    {22, u"CostObj", u"cCode='", u"cName='", u" AND bEnd=1", u"cCode", u"cName"},
};

// An archive asked by code, then by name. The table is opened whole only to
// see whether the archive has any row at all.
struct QueriedArchive {
  int16_t type;
  const char16_t* table;
  const char16_t* code_query;
  const char16_t* name_query;
  const char16_t* end_column;
  const char16_t* code_column;
  const char16_t* name_column;
  // The vendor- and customer-class walk over same-named rows asks the whole
  // table, which never moves, whether it is at its end: the walk never stops
  // there, and reading past the last named row fails for want of a row.
  bool walk_watches_table;
};

constexpr QueriedArchive kQueriedArchives[] = {
    {6, u"SettleStyle", u"select * from settlestyle where csscode='",
     u"select * from settlestyle where cssname='", u"bSSEnd", u"cSSCode", u"cSSName", false},
    {7, u"InventoryClass", u"select * from inventoryclass where cinvccode='",
     u"select * from inventoryclass where cinvcname='", u"bInvCEnd", u"cInvcCode", u"cInvCName",
     false},
    {8, u"VendorClass", u"select * from vendorclass where cvccode='",
     u"select * from vendorclass where cvcname='", u"bVCEnd", u"cVCCode", u"cVCName", true},
    {9, u"CustomerClass", u"select * from customerclass where ccccode='",
     u"select * from customerclass where cccname='", u"bCCEnd", u"cCCCode", u"cCCName", true},
    {12, u"Department", u"select * from department where cdepcode='",
     u"select * from department where cdepname='", u"bDepEnd", u"cDepCode", u"cDepName", false},
    {15, u"Code", u"select * from code where ccode='", u"select * from code where ccode_name='",
     u"bEnd", u"cCode", u"cCode_Name", false},
};

template <typename Archive, size_t N>
const Archive* ArchiveOfType(const Archive (&archives)[N], int16_t type) {
  for (const auto& archive : archives) {
    if (archive.type == type) return &archive;
  }
  return nullptr;
}

// The current row's name or code, as stored. Both are read; only the one
// answered is converted, so a Null in the other is harmless.
template <typename Archive>
String RowAnswer(const KitRecordset& rs, const Archive& archive, bool IsReturnName) {
  const Variant name = data::Column(rs, archive.name_column);
  const Variant code = data::Column(rs, archive.code_column);
  return ToString(IsReturnName ? name : code);
}

// The name of a later row in the walk ends it when it is not exactly the
// typed text: letter case and trailing blanks count here, unlike in the
// database's own comparison that found the rows.
bool DiffersFrom(const Variant& name, const String& text) {
  return !name.IsNull() && ToString(name) != text;
}

String FindInTable(KitRecordset& table, const FoundArchive& archive, const String& cString,
                   bool IsEnd, bool IsReturnName) {
  const String end_clause = IsEnd ? archive.end_clause : u"";
  table.MoveLast();
  table.MoveFirst();
  table.FindFirst(archive.code_criterion + cString + u"'" + end_clause);
  if (table.NoMatch()) {
    table.FindFirst(archive.name_criterion + cString + u"'" + end_clause);
    if (table.NoMatch()) return {};
  }
  return RowAnswer(table, archive, IsReturnName);
}

String QueryByCodeThenName(KitDatabase& db, std::shared_ptr<KitRecordset>& lookup,
                           const KitRecordset& table, const QueriedArchive& archive,
                           const String& cString, bool IsEnd, bool IsReturnName) {
  lookup = data::OpenKit(db, archive.code_query + cString + u"'");
  if (lookup->RecordCount() != 0) {
    // A code that is no end row is refused outright; its text is not tried as
    // a name. A Null end flag is no end row here.
    if (IsEnd && !IsTrueCondition(data::Column(*lookup, archive.end_column))) return {};
    return RowAnswer(*lookup, archive, IsReturnName);
  }

  lookup = data::OpenKit(db, archive.name_query + cString + u"'");
  if (lookup->RecordCount() == 0) return {};
  if (!IsEnd) return RowAnswer(*lookup, archive, IsReturnName);

  // The first named row answers unless its end flag is plainly false; a Null
  // flag counts as an end row here.
  const Variant first_end = data::Column(*lookup, archive.end_column);
  if (first_end.IsNull() || IsTrueCondition(first_end)) {
    return RowAnswer(*lookup, archive, IsReturnName);
  }

  // Walk on through the rows bearing the same name to the first end row.
  const KitRecordset& at_end = archive.walk_watches_table ? table : *lookup;
  for (;;) {
    lookup->MoveNext();
    if (at_end.Eof()) return {};
    if (DiffersFrom(data::Column(*lookup, archive.name_column), cString)) return {};
    if (IsTrueCondition(data::Column(*lookup, archive.end_column))) {
      return RowAnswer(*lookup, archive, IsReturnName);
    }
  }
}

}  // namespace

String clsPub::CheckDirGrade(const String& cString, bool IsEnd, int16_t iType, bool IsReturnName) {
  const detail::CallReads reads(dbia_);
  if (Trim(cString).empty()) return {};
  const FoundArchive* found = ArchiveOfType(kFoundArchives, iType);
  const QueriedArchive* queried = ArchiveOfType(kQueriedArchives, iType);
  if (!found && !queried) return {};

  // Every call first makes sure the archive has rows. Nothing opened here is
  // closed: the table is dropped on return and the lookup stays open.
  auto table = data::OpenKit(Database(), found ? found->table : queried->table);
  if (data::HoldsNoRow(*table)) return {};  // from the first row: the archive is not counted
  if (found) return FindInTable(*table, *found, cString, IsEnd, IsReturnName);
  return QueryByCodeThenName(Database(), Lookup(), *table, *queried, cString, IsEnd, IsReturnName);
}

}  // namespace kavrin
