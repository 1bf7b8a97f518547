// Warehouses and the departments they belong to: a warehouse's value style
// and department, a department's value style and warehouse, and the list of
// warehouses offered on a form.
#include "component/Trap.h"
#include "data/Access.h"
#include "kavrin/Convert.h"
#include "kavrin/Error.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

namespace {

// Width of the code column in a warehouse list item; the name follows it.
constexpr size_t kCodeColumnWidth = 15;

// The form's list control, reached by late binding only: a value that is no
// object cannot be called (424), an empty reference has nothing to call (91).
Dispatch& ListControl(const Variant& Cbo) {
  if (!Cbo.IsObject()) throw Error::Runtime(errors::kObjectRequired);
  if (!Cbo.AsObject()) throw Error::Runtime(errors::kObjectNotSet);
  return *Cbo.AsObject();
}

// A list item: the code filling its column, then the name. A code longer than
// the column leaves a negative count of filling spaces (5); a Null code has no
// length (94); a Null name adds nothing.
String ListItem(const Variant& code, const Variant& name) {
  const String code_text = ToString(code);
  if (code_text.size() > kCodeColumnWidth) throw Error::Runtime(errors::kInvalidProcedureCall);
  String item = code_text + String(kCodeColumnWidth - code_text.size(), u' ');
  if (!name.IsNull()) item += ToString(name);
  return item;
}

}  // namespace

String clsPub::WhCodeToValueStyle(const String& WhCode) {
  const detail::CallReads reads(dbia_);
  return AnswerOrDefault(String(), [&] {
    return ToString(FromTo(u"cWhCode", WhCode, u"cWhValueStyle", u"Warehouse"));
  });
}

String clsPub::WhCodeToDep(const String& WhCode) {
  const detail::CallReads reads(dbia_);
  return AnswerOrDefault(
      String(), [&] { return ToString(FromTo(u"cWhCode", WhCode, u"cDepCode", u"Warehouse")); });
}

String clsPub::DepCodeToValueStyle(const String& Code) {
  const detail::CallReads reads(dbia_);
  String sql = u"SELECT DISTINCT cWhValueStyle FROM Warehouse ";
  sql += u"WHERE cDepCode='" + Code + u"'";
  auto rs = data::OpenKit(Database(), sql);
  // The warehouses of one department share their value style; should they
  // not, the first distinct style the database lists answers.
  String answer;
  if (rs->RecordCount() != 0) answer = ToString(data::Column(*rs, u"cWhValueStyle"));
  rs->Close();
  return answer;
}

String clsPub::DepCode2WhCode(const String& cDepCode) {
  const detail::CallReads reads(dbia_);
  const String sql = u"SELECT cWhCode FROM Warehouse WHERE cDepCode='" + cDepCode + u"'";
  auto rs = data::OpenKit(Database(), sql);
  String answer;
  if (!data::HoldsNoRow(*rs)) {
    rs->MoveLast();
    rs->MoveFirst();
    answer = ToString(data::Column(*rs, u"cWhCode"));
  }
  rs->Close();
  return answer;
}

void clsPub::FillCboCK(const Variant& Cbo, const String& AccDep) {
  const detail::CallReads reads(dbia_);
  // The list is emptied first, so it stays empty whatever fails later.
  ListControl(Cbo).Call(u"Clear");
  String sql = u"SELECT cWhCode,cWhName FROM WareHouse";
  if (!AccDep.empty()) sql += u" WHERE cDepCode='" + AccDep + u"'";
  sql += u" ORDER BY cWhCode";
  auto rs = data::OpenDirect(Database(), sql, /*client_cursor=*/true);
  while (!rs->Eof()) {
    Variant item = ListItem(data::Column(*rs, u"cWhCode"), data::Column(*rs, u"cWhName"));
    ListControl(Cbo).Call(u"AddItem", std::span<Variant>(&item, 1));
    rs->MoveNext();
  }
  rs->Close();
}

}  // namespace kavrin
