// The free-item switches of an inventory item: the first two as truth values,
// or all ten into the caller's array.
#include "data/Access.h"
#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

namespace {

// An item has ten numbered free items; element i of the caller's array
// receives switch i + 1.
constexpr int16_t kFreeItemCount = 10;

}  // namespace

void clsPub::GetInvUseFree(const String& strInvCode, bool& blnFree1, bool& blnFree2) {
  const detail::CallReads reads(dbia_);
  const String sql = u"Select bFree1,bFree2 from Inventory where cinvcode='" + strInvCode + u"'";
  auto rs = data::OpenDirect(Database(), sql, /*client_cursor=*/false);
  // Reset only once the query is open: a failing query leaves the caller's
  // values, an unknown item answers false for both.
  blnFree1 = false;
  blnFree2 = false;
  if (!rs->Eof()) {
    blnFree1 = ToBoolean(data::Column(*rs, u"bFree1"));
    blnFree2 = ToBoolean(data::Column(*rs, u"bFree2"));
  }
  rs->Close();
}

void clsPub::GetInvUseFreeNew(const String& strInvCode, Variant& blnFree) {
  const detail::CallReads reads(dbia_);
  const String sql =
      u"Select bFree1,bFree2,bFree3,bFree4,bFree5,bFree6,bFree7,bFree8,bFree9,bFree10"
      u" from Inventory where cinvcode='" +
      strInvCode + u"'";
  auto rs = data::OpenDirect(Database(), sql, /*client_cursor=*/false);
  // An unknown item leaves the caller's array as it was. Otherwise each
  // switch goes in as stored; the array's own bounds and element type decide
  // whether it fits, and the switches stored before a failing one stay.
  if (!rs->Eof()) {
    for (int16_t i = 0; i < kFreeItemCount; ++i) {
      if (!blnFree.IsArray()) throw Error::Runtime(errors::kTypeMismatch);
      blnFree.AsArray().Store(i, rs->Fields()(int32_t{i}).Value());
    }
  }
  rs->Close();
}

}  // namespace kavrin
