// What an inventory item is: its main unit, reference cost and class (each
// one column through FromTo, a missing item answering the default), whether
// it is batch-tracked, and the truth of any yes/no column the caller names.
#include "component/Trap.h"
#include "data/Access.h"
#include "kavrin/Convert.h"
#include "kavrin/Host.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

// The three attribute lookups answer their default for a missing item, a Null
// column and any failure alike: FromTo answers Null for a missing row, and
// converting the Null fails into the trap.

String clsPub::InvCodeToUnit(const String& cCode) {
  const detail::CallReads reads(dbia_);
  return AnswerOrDefault(
      String(), [&] { return ToString(FromTo(u"cInvCode", cCode, u"cInvM_Unit", u"Inventory")); });
}

double clsPub::InvCodeToUnitPrice(const String& Code) {
  const detail::CallReads reads(dbia_);
  return AnswerOrDefault(
      0.0, [&] { return ToDouble(FromTo(u"cInvCode", Code, u"iInvRCost", u"Inventory")); });
}

String clsPub::InvCodeToClass(const String& cCode) {
  const detail::CallReads reads(dbia_);
  return AnswerOrDefault(
      String(), [&] { return ToString(FromTo(u"cInvCode", cCode, u"cInvCCode", u"Inventory")); });
}

Variant clsPub::InvIsBatch(const String& cCode) {
  const detail::CallReads reads(dbia_);
  const String sql = String(u"SELECT bTrack FROM Inventory") + u" WHERE cInvCode='" + cCode + u"'";
  auto rs = data::OpenKit(Database(), sql);
  // A missing item is "not batch-tracked"; a present one answers its switch
  // as stored, Null included.
  Variant answer = false;
  if (rs->RecordCount() >= 1) answer = data::Column(*rs, u"bTrack");
  rs->Close();
  return answer;
}

bool clsPub::InvCodeIsTorF(const String& cCode, const String& cType) {
  const detail::CallReads reads(dbia_);
  const String sql = u"SELECT " + cType + u" FROM Inventory WHERE cInvCode='" + cCode + u"'";
  auto rs = data::OpenKit(Database(), sql);
  bool answer = false;
  if (data::HoldsNoRow(*rs)) {
    CurrentUiHost()->MsgBox(u"该存货没有找到！", vbOKOnly, DefaultMessageTitle());
  } else {
    // The first column, whatever cType names (it may name several).
    answer = ToBoolean(rs->Fields()(int32_t{0}).Value());
  }
  rs->Close();
  return answer;
}

}  // namespace kavrin
