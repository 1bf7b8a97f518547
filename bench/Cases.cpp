#include "Cases.h"

#include "kavrin/Convert.h"

namespace kavrin::bench {

namespace {

// A form's list control: Clear and AddItem.
class ListControl final : public Dispatch {
 public:
  String TypeName() const override { return u"ComboBox"; }
  Variant Invoke(StringView name, InvokeKind, std::span<Variant> args) override {
    if (EqualsNoCase(name, u"Clear")) {
      items.clear();
    } else if (EqualsNoCase(name, u"AddItem")) {
      items.push_back(ToString(args[0]));
    } else {
      ThrowMemberNotFound(TypeName(), name);
    }
    return {};
  }
  std::vector<String> items;
};

std::string Text(const String& text) {
  return ToUtf8(text);
}
String Wide(const std::string& text) {
  return FromUtf8(text);
}
std::string Quoted(const std::string& text) {
  return "'" + text + "'";
}

}  // namespace

std::vector<Case> MakeCases(const SuiteSize& size) {
  const int64_t mid = size.items / 2 + 1;    // an item of the second half
  const int64_t third = size.items / 3 + 1;  // another, looked up by name
  const std::string code = ItemCode(mid);
  const std::string name = ItemName(third);
  const std::string missing = "无此编码";
  const std::string cost_code = CostObjectCode(size, size.cost_objects / 2 + 1);
  const std::string cost_name = CostObjectName(size.cost_objects / 3 + 1);
  const std::string class_code = ClassCode(size, size.inventory_classes / 2 + 1);
  const std::string warehouse = WarehouseCode(1);
  const std::string department = DepartmentCode(1);

  const auto inventory_probe = [](Floor& f) { f.First("SELECT * FROM Inventory"); };
  const auto by_code = [](const std::string& text) {
    return "select * from inventory where cinvcode=" + Quoted(text);
  };
  const auto by_name = [](const std::string& text) {
    return "select * from inventory where cinvname=" + Quoted(text);
  };

  std::vector<Case> cases;
  cases.push_back({"CheckDirNoGrade/code", true,
                   [=](clsPub& pub) { return Text(pub.CheckDirNoGrade(Wide(code), 0)); }, code,
                   [=](Floor& f) {
                     inventory_probe(f);
                     f.First(by_code(code));
                   }});
  cases.push_back({"CheckDirNoGrade/name", true,
                   [=](clsPub& pub) { return Text(pub.CheckDirNoGrade(Wide(name), 0)); },
                   ItemCode(third),
                   [=](Floor& f) {
                     inventory_probe(f);
                     f.First(by_code(name));
                     f.First(by_name(name));
                   }});
  cases.push_back({"CheckDirNoGrade/miss", true,
                   [=](clsPub& pub) { return Text(pub.CheckDirNoGrade(Wide(missing), 0)); }, "",
                   [=](Floor& f) {
                     inventory_probe(f);
                     f.First(by_code(missing));
                     f.First(by_name(missing));
                   }});
  // An existing code is answered from the first row of the whole table.
  cases.push_back({"CheckInv/code", true,
                   [=](clsPub& pub) { return Text(pub.CheckInv(Wide(code), false)); }, ItemCode(1),
                   [=](Floor& f) {
                     inventory_probe(f);
                     f.First(by_code(code));
                   }});
  cases.push_back(
      {"CheckDirGrade/find-code", true,
       [=](clsPub& pub) { return Text(pub.CheckDirGrade(Wide(cost_code), true, 22)); }, cost_code,
       [=](Floor& f) {
         f.First("SELECT * FROM CostObj");
         f.Find("SELECT * FROM CostObj WHERE cCode=" + Quoted(cost_code) + " AND bEnd=1");
       }});
  cases.push_back(
      {"CheckDirGrade/find-name", true,
       [=](clsPub& pub) { return Text(pub.CheckDirGrade(Wide(cost_name), true, 22)); },
       CostObjectCode(size, size.cost_objects / 3 + 1),
       [=](Floor& f) {
         f.First("SELECT * FROM CostObj");
         f.Find("SELECT * FROM CostObj WHERE cCode=" + Quoted(cost_name) + " AND bEnd=1");
         f.Find("SELECT * FROM CostObj WHERE cName=" + Quoted(cost_name) + " AND bEnd=1");
       }});
  cases.push_back({"CheckDirGrade/query", true,
                   [=](clsPub& pub) { return Text(pub.CheckDirGrade(Wide(class_code), true, 7)); },
                   class_code,
                   [=](Floor& f) {
                     f.First("SELECT * FROM InventoryClass");
                     f.First("select * from inventoryclass where cinvccode=" + Quoted(class_code));
                   }});
  cases.push_back({"CodeToName", false,
                   [=](clsPub& pub) { return Text(pub.CodeToName(Wide(code), 0)); }, ItemName(mid),
                   [=](Floor& f) {
                     f.First("select cInvName as name from Inventory where cInvCode=" +
                             Quoted(code));
                   }});
  cases.push_back({"InvCodeToUnit", false,
                   [=](clsPub& pub) { return Text(pub.InvCodeToUnit(Wide(code))); }, ItemUnit(mid),
                   [=](Floor& f) {
                     f.First("select cInvM_Unit as name from Inventory where cInvCode=" +
                             Quoted(code));
                   }});
  const std::string item_class = ClassCode(size, ClassOfItem(size, mid));
  cases.push_back(
      {"GetInvDifHead", false,
       [=](clsPub& pub) {
         String head;
         String dif;
         pub.GetInvDifHead(Wide(warehouse), Wide(item_class), Wide(code), head, dif);
         return Text(head) + "/" + Text(dif);
       },
       HeadsOf(size, 1, mid),
       [=](Floor& f) {
         f.First("SELECT * FROM AccInformation WHERE cSysID='AA' AND cName='cGoodClass'");
         const std::string select = " Select cInvHead,cDifHead from IA_HeadSet Where ";
         const std::string settings[] = {
             select + "  cwhcode='" + warehouse + " '" + "  And cinvcode=substring('" + code +
                 "',1, len(cInvCode)) ",
             select + " cwhcode is null and  cinvcode=substring('" + code + "',1, len(cInvCode)) ",
             select + "  cwhcode='" + warehouse + " '" + "  And cinvccode=substring('" +
                 item_class + "',1, len(cinvccode)) ",
             select + "  cwhcode is null and cinvccode=substring('" + item_class +
                 "',1, len(cinvccode)) ",
             select + "  cinvcode is null and cwhcode='" + warehouse + "'",
         };
         for (const auto& sql : settings) {
           if (f.First(sql)) break;
         }
       }});
  cases.push_back({"CheckAccDep", true,
                   [=](clsPub& pub) { return Text(pub.CheckAccDep(Wide(department))); }, department,
                   [=](Floor& f) {
                     f.First(
                         "SELECT Department.cDepCode FROM Department  INNER JOIN Warehouse ON "
                         "Department.cDepCode = Warehouse.cDepCode WHERE Department.cDepCode=" +
                         Quoted(department));
                   }});
  // The binding check asks one query per department: it grows with them.
  cases.push_back(
      {"CheckWareDep", false,
       [](clsPub& pub) { return std::string(pub.CheckWareDep() ? "True" : "False"); }, "True",
       [](Floor& f) {
         if (f.First("SELECT * FROM WareHouse WHERE cDepCode is null")) return;
         for (const auto& dep : f.All("SELECT DISTINCT cDepCode FROM Warehouse")) {
           if (f.All("SELECT DISTINCT cWhValueStyle FROM Warehouse WHERE cDepCode=" + Quoted(dep))
                   .size() > 1) {
             return;
           }
         }
       }});
  const int64_t listed = (size.warehouses + size.departments - 1) / size.departments;
  cases.push_back({"FillCboCK", false,
                   [=](clsPub& pub) {
                     auto list = std::make_shared<ListControl>();
                     pub.FillCboCK(Variant(std::shared_ptr<Dispatch>(list)), Wide(department));
                     return std::to_string(list->items.size()) + " items";
                   },
                   std::to_string(listed) + " items",
                   [=](Floor& f) {
                     f.All("SELECT cWhCode,cWhName FROM WareHouse WHERE cDepCode=" +
                           Quoted(department) + " ORDER BY cWhCode");
                   }});
  cases.push_back({"FormatNum", false, [](clsPub& pub) { return Text(pub.FormatNum(1234567.891)); },
                   "1,234,567.89", nullptr});
  return cases;
}

}  // namespace kavrin::bench
