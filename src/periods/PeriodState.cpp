// CurPeriod, GetMonthState, IsEndHandled, SubMaxKeepDate and StartAccMonth:
// where the books of inventory accounting stand.
#include "data/Access.h"
#include "kavrin/Convert.h"
#include "kavrin/Format.h"
#include "kavrin/OleDate.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

namespace {

// The period after `last`, typed as the platform types `last + 1`: a Byte or
// Boolean period gives an Integer, an Integer that overflows becomes a Long,
// a Long that overflows a Double, a text is read as a Double.
Variant PeriodAfter(const Variant& last) {
  switch (last.type()) {
    case VarType::Empty:
      return int16_t{1};
    case VarType::Boolean:
    case VarType::Byte:
    case VarType::Integer: {
      const int32_t next = ToLong(last) + 1;
      if (next > INT16_MAX) return next;
      return static_cast<int16_t>(next);
    }
    case VarType::Long: {
      const int64_t next = int64_t{last.AsLong()} + 1;
      if (next > INT32_MAX) return static_cast<double>(next);
      return static_cast<int32_t>(next);
    }
    case VarType::Date:
      return Date{last.AsDate().value + 1};
    default:
      return ToDouble(last) + 1;
  }
}

}  // namespace

Variant clsPub::CurPeriod() {
  const detail::CallReads reads(dbia_);
  auto rs = data::OpenKit(Database(),
                          u"SELECT MAX(iPeriod) AS "
                          u"CurMonth FROM GL_mEnd WHERE bFlag_IA=1");
  Variant last = Variant::Null();
  if (rs->RecordCount() != 0) last = data::Column(*rs, u"CurMonth");
  // No closed period answers 0, not 1: the forms read 0 as "books not closed
  // yet". After December the period stays 12.
  Variant period;
  if (last.IsNull()) {
    period = int16_t{0};
  } else if (ToDouble(last) == 12) {
    period = int16_t{12};
  } else {
    period = PeriodAfter(last);
  }
  rs->Close();
  return period;
}

bool clsPub::GetMonthState(const String& strSysID, int16_t intMonth) {
  const detail::CallReads reads(dbia_);
  // The general ledger's own flag has no suffix; the id is compared exactly.
  const String flag = strSysID == u"GL" ? String(u"bFlag") : u"bFlag_" + strSysID;
  const String sql =
      u"Select " + flag + u" from gl_mend where iPeriod=" + ToString(Variant(intMonth));
  auto rs = data::OpenDirect(Database(), sql, /*client_cursor=*/true);
  bool closed = false;
  if (!rs->Eof()) closed = ToBoolean(rs->Fields().Item(0).Value());
  rs->Close();
  return closed;
}

bool clsPub::IsEndHandled(uint8_t /*iMonth*/) {
  const detail::CallReads reads(dbia_);
  // The month asked about is never read: every warehouse is compared with the
  // current period, as two digits ("03", and "00" while no period is closed).
  const String period = FormatNumber(ToString(CurPeriod()), u"00");
  const String sql =
      u"SELECT cWhCode , cMonth from Warehouse WHERE "
      u" RIGHT(cMonth,2)<>'" +
      period +
      u"'"
      u" OR cMonth is NULL";
  auto rs = data::OpenKit(Database(), sql);
  const bool all_carry_it = data::HoldsNoRow(*rs);
  rs->Close();
  return all_carry_it;
}

Date clsPub::SubMaxKeepDate() {
  const detail::CallReads reads(dbia_);
  auto rs = data::OpenKit(Database(), u"SELECT MAX(dKeepDate) as MyDate FROM IA_Subsidiary ");
  Date latest{};  // an empty ledger answers the zero date
  if (!data::HoldsNoRow(*rs)) {
    const Variant value = data::Column(*rs, u"MyDate");
    if (!value.IsNull()) latest = ToDate(value);
  }
  rs->Close();
  return latest;
}

uint8_t clsPub::StartAccMonth(String& SysID) {
  const detail::CallReads reads(dbia_);
  if (SysID.empty()) SysID = u"IA";
  const String sql = u"SELECT * FROM AccInformation WHERE cSysID='" + SysID + u"' AND cName='d" +
                     SysID + u"StartDate'";
  auto rs = data::OpenKit(Database(), sql);
  // Only the value set for the account set counts; the setting's default does not.
  uint8_t month = 0;
  if (!data::HoldsNoRow(*rs)) {
    const Variant stored = data::Column(*rs, u"cvalue");
    if (!stored.IsNull() && !Trim(ToString(stored)).empty()) {
      month = static_cast<uint8_t>(SplitDate(ToDate(stored)).month);
    }
  }
  rs->Close();
  return month;
}

uint8_t clsPub::StartAccMonth() {
  const detail::CallReads reads(dbia_);
  String SysID;
  return StartAccMonth(SysID);
}

}  // namespace kavrin
