// CheckAccDep, CheckAssDep and CheckWareDep: departments stand for the
// warehouses bound to them.
//
// A department entry is valid only for a department bound to a warehouse (for
// CheckAssDep, to a warehouse valued first-in-first-out, last-in-first-out or
// by specific identification). The warehouse archive is sound when every
// warehouse has a department and no department's warehouses mix value styles.
#include "data/Access.h"
#include "kavrin/Convert.h"
#include "kavrin/clsPub.h"
#include "platform/CallReads.h"

namespace kavrin {

namespace {

// The texts of one department lookup: the base query, then the code or the
// name condition, the typed text and a closing quote. The doubled spaces the
// pieces join into belong to the texts.
struct DepartmentQuery {
  String base;
  const char16_t* code_condition;
  const char16_t* name_condition;
};

DepartmentQuery BoundDepartments(bool IsReturnName) {
  return {String(u"SELECT Department.") + (IsReturnName ? u"cDepName" : u"cDepCode") +
              u" FROM Department " +
              u" INNER JOIN Warehouse ON Department.cDepCode = Warehouse.cDepCode" +
              u" WHERE Department.",
          u"cDepCode='", u"cDepName='"};
}

DepartmentQuery ValuedDepartments(bool IsReturnName) {
  return {String(u"SELECT Department.") + (IsReturnName ? u"cDepName " : u"cDepCode  ") +
              u"FROM Department INNER JOIN Warehouse ON Department.cDepCode = "
              u"Warehouse.cDepCode" +
              u" WHERE WareHouse.cWhValueStyle IN ('先进先出法','后进先出法','个别计价法') ",
          u" AND WareHouse.cDepCode='", u" AND Department.cDepName='"};
}

// Tries the typed text as a department code, then as a name, and answers the
// selected column of the first joined row.
String CodeThenName(KitDatabase& db, const DepartmentQuery& query, const String& cString,
                    bool IsReturnName) {
  const char16_t* column = IsReturnName ? u"cDepName" : u"cDepCode";
  String answer;
  auto rs = data::OpenKit(db, query.base + query.code_condition + cString + u"'");
  if (!data::HoldsNoRow(*rs)) {
    answer = ToString(data::Column(*rs, column));
  } else {
    rs = data::OpenKit(db, query.base + query.name_condition + cString + u"'");
    if (!data::HoldsNoRow(*rs)) answer = ToString(data::Column(*rs, column));
  }
  rs->Close();
  return answer;
}

}  // namespace

String clsPub::CheckAccDep(const String& cString, bool IsReturnName) {
  const detail::CallReads reads(dbia_);
  return CodeThenName(Database(), BoundDepartments(IsReturnName), cString, IsReturnName);
}

String clsPub::CheckAssDep(const String& cString, bool IsReturnName) {
  const detail::CallReads reads(dbia_);
  return CodeThenName(Database(), ValuedDepartments(IsReturnName), cString, IsReturnName);
}

bool clsPub::CheckWareDep() {
  const detail::CallReads reads(dbia_);
  // Every warehouse is bound to a department.
  auto rs = data::OpenKit(Database(), u"SELECT * FROM WareHouse WHERE cDepCode is null");
  if (!data::HoldsNoRow(*rs)) {
    rs->Close();
    return false;
  }

  // No department's warehouses use more than one value style. The record set
  // of unbound warehouses is replaced by the departments', not closed.
  rs = data::OpenKit(Database(), u"SELECT DISTINCT cDepCode FROM Warehouse");
  if (data::HoldsNoRow(*rs)) {
    rs->Close();
    return true;
  }
  rs->MoveLast();
  rs->MoveFirst();
  auto styles = std::make_shared<KitRecordset>();
  while (!rs->Eof()) {
    const Variant department = data::Column(*rs, u"cDepCode");
    const String sql = String(u"SELECT DISTINCT cWhValueStyle FROM Warehouse") +
                       u" WHERE cDepCode='" +
                       (department.IsNull() ? String() : ToString(department)) + u"'";
    styles = data::OpenKit(Database(), sql);
    if (!data::HoldsNoRow(*styles)) {
      styles->MoveLast();
      styles->MoveFirst();  // the count is exact once the last row has been reached
      if (styles->RecordCount() > 1) {
        styles->Close();
        rs->Close();
        return false;
      }
    }
    rs->MoveNext();
  }
  styles->Close();
  rs->Close();
  return true;
}

}  // namespace kavrin
