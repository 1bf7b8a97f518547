// FromTo, CodeToName and GetAccInfo: one key in, one value out.
#include "component/Trap.h"
#include "data/Access.h"
#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

namespace {

// The archives CodeToName knows, by Style: table, name column, code column.
struct NamedArchive {
  uint8_t style;
  const char16_t* table;
  const char16_t* name_column;
  const char16_t* code_column;
};

constexpr NamedArchive kNamedArchives[] = {
    {0, u"Inventory", u"cInvName", u"cInvCode"},
    {1, u"Vendor", u"cVenAbbName", u"cVenCode"},
    {2, u"Customer", u"cCusAbbName", u"cCusCode"},
    {3, u"Warehouse", u"cWhName", u"cWhCode"},
    {4, u"Rd_Style", u"cRdName", u"cRdCode"},
    {5, u"Person", u"cPersonName", u"cPersonCode"},
    {6, u"SettleStyle", u"cSSName", u"cSSCode"},
    {7, u"InventoryClass", u"cInvCName", u"cInvCCode"},
    // The vendor-class row names cSCName/cSCCode, unlike the vendor-class
    // check; a schema without those columns answers "" through the trap.
    {8, u"VendorClass", u"cSCName", u"cSCCode"},
    {9, u"CustomerClass", u"cCCName", u"cCCCode"},
    {10, u"Bank", u"cBName", u"cBCode"},
    {11, u"ForeignCurrency", u"cExchName", u"cExchCode"},
    {12, u"Department", u"cDepName", u"cDepCode"},
    {13, u"ExpenseItem", u"cExpName", u"cExpCode"},
    {14, u"EcoClass", u"cEcoName", u"cEcoCode"},
    {15, u"code", u"ccode_name", u"ccode"},
    {22, u"CostObj", u"cName", u"cCode"},
};

const NamedArchive* FindNamedArchive(uint8_t style) {
  for (const auto& archive : kNamedArchives) {
    if (archive.style == style) return &archive;
  }
  return nullptr;
}

}  // namespace

Variant clsPub::FromTo(const String& strFrom, const String& strFromValue, const String& strTo,
                       const String& strTable) {
  const detail::CallReads reads(dbia_);
  auto rs = std::make_shared<ado::Recordset>();
  rs->CursorLocation(ado::adUseClient);
  const String sql = u"select " + strTo + u" as name from " + strTable + u" where " + strFrom +
                     u"='" + strFromValue + u"'";
  rs->Open(sql, Database().Connection(), ado::adOpenForwardOnly, ado::adLockReadOnly,
           ado::adCmdText);
  Variant result = Variant::Null();
  const bool eof = rs->Eof();
  const bool bof = rs->Bof();
  if (!(eof && bof)) result = data::Column(*rs, u"Name");
  rs->Close();
  return result;
}

String clsPub::CodeToName(const String& Code, uint8_t Style) {
  const detail::CallReads reads(dbia_);
  return AnswerOrDefault(String(), [&] {
    const NamedArchive* archive = FindNamedArchive(Style);
    if (!archive) return String();
    return ToString(FromTo(archive->code_column, Code, archive->name_column, archive->table));
  });
}

String clsPub::GetAccInfo(const String& SysID, const String& cName) {
  const detail::CallReads reads(dbia_);
  const String sql =
      u"SELECT * FROM AccInformation WHERE cSysID='" + SysID + u"' AND cName='" + cName + u"'";
  auto rs = data::OpenKit(Database(), sql);
  String answer;
  const bool eof = rs->Eof();
  const bool bof = rs->Bof();
  if (!eof && !bof) {
    if (!rs->Fields()(u"cValue").Value().IsNull()) {
      answer = Trim(ToString(data::Column(*rs, u"cvalue")));
    } else if (const Variant fallback = data::Column(*rs, u"cDefault"); !fallback.IsNull()) {
      answer = ToString(fallback);  // the default is answered as stored, untrimmed
    }
  }
  rs->Close();
  return answer;
}

}  // namespace kavrin
