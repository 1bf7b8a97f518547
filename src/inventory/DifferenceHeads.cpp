// The inventory head and difference head of an item in a warehouse, from the
// head settings: the most specific setting that applies wins.
#include <array>

#include "data/Access.h"
#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

namespace {

// A head as the caller receives it: a Null head is no head.
String HeadText(const Variant& head) {
  return head.IsNull() ? String() : ToString(head);
}

}  // namespace

void clsPub::GetInvDifHead(const String& cWhCode, const String& cInvClass, const String& cInvCode,
                           String& strHeadCode, String& strDifCode) {
  const detail::CallReads reads(dbia_);
  // The inventory-class coding scheme is read, though the heads do not depend
  // on it; a failure to read it still fails the call.
  GetAccInfo(u"AA", u"cGoodClass");

  // From the most specific setting to the most general: this warehouse and
  // an item-code prefix, any warehouse and an item-code prefix, the same two
  // for a class-code prefix, and last this warehouse's setting without an
  // item code. A row's code is a prefix of the caller's when it equals that
  // many leading characters of it. The blank after the warehouse code in the
  // first and third is ignored by the database's comparison of texts.
  const String select = u" Select cInvHead,cDifHead from IA_HeadSet Where ";
  const std::array<String, 5> settings = {
      select + u"  cwhcode='" + cWhCode + u" '" + u"  And cinvcode=substring('" + cInvCode +
          u"',1, len(cInvCode)) ",
      select + u" cwhcode is null and  cinvcode=substring('" + cInvCode + u"',1, len(cInvCode)) ",
      select + u"  cwhcode='" + cWhCode + u" '" + u"  And cinvccode=substring('" + cInvClass +
          u"',1, len(cinvccode)) ",
      select + u"  cwhcode is null and cinvccode=substring('" + cInvClass +
          u"',1, len(cinvccode)) ",
      select + u"  cinvcode is null and cwhcode='" + cWhCode + u"'",
  };

  // One record set serves every query in turn. Among several rows of the
  // setting found, the database's first answers, not the longest prefix.
  auto rs = std::make_shared<ado::Recordset>();
  for (const String& sql : settings) {
    rs->Open(sql, Database().Connection(), ado::adOpenForwardOnly, ado::adLockReadOnly,
             ado::adCmdText);
    if (!rs->Eof()) {
      strHeadCode = HeadText(data::Column(*rs, u"cInvHead"));
      strDifCode = HeadText(data::Column(*rs, u"cDifHead"));
      rs->Close();
      return;
    }
    rs->Close();
  }
  // No setting applies: the caller's values stay.
}

void clsPub::GetInvDifHead(const String& cWhCode, const String& cInvClass, const String& cInvCode,
                           String& strHeadCode) {
  const detail::CallReads reads(dbia_);
  String unused_dif;
  GetInvDifHead(cWhCode, cInvClass, cInvCode, strHeadCode, unused_dif);
}

void clsPub::GetInvDifHead(const String& cWhCode, const String& cInvClass, const String& cInvCode) {
  const detail::CallReads reads(dbia_);
  String unused_head;
  String unused_dif;
  GetInvDifHead(cWhCode, cInvClass, cInvCode, unused_head, unused_dif);
}

}  // namespace kavrin
