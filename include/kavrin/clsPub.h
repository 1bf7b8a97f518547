// clsPub: the shared helpers of the inventory module's entry forms.
//
// A host creates one clsPub, hands it the suite's database through DBIA, and
// calls any member in any order. Members validate typed codes and names
// against the suite's archives, turn codes into names and attributes, read
// account-set settings and period state, and format amounts. They only read
// the database.
//
// Ownership: DBIA is a shared reference to the host's KitDatabase; reading it
// when empty creates an unconnected default one. The object also keeps the
// record set of its latest archive lookup open until the next one replaces it.
//
// Errors: a member that fails throws kavrin::Error with the number, source and
// description raised by the kit, ADO or a conversion, and leaves its result
// unset. Six members trap every failure and answer a default instead
// (CodeToName, InvCodeToUnit, InvCodeToUnitPrice, InvCodeToClass,
// WhCodeToValueStyle, WhCodeToDep); ExistTableQueryDAO never fails.
//
// Late binding: clsPub is a Dispatch; Invoke calls a member by name (letter
// case ignored) with Variant arguments, coerces them to the declared types,
// and writes back the arguments a member writes. Members() lists them in the
// fixed order of the class's interface.
//
// Thread-safety: none; one object serves one thread at a time. Separate
// objects share nothing.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "kavrin/Dispatch.h"
#include "kavrin/Error.h"
#include "kavrin/Export.h"
#include "kavrin/KitDatabase.h"
#include "kavrin/Members.h"
#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin {

namespace dao {
class Database;
}

class KAVRIN_API clsPub : public Dispatch {
 public:
  clsPub();
  // Empties DBIA first, then releases the lookup record set without closing it.
  ~clsPub() override;
  clsPub(const clsPub&) = delete;
  clsPub& operator=(const clsPub&) = delete;

  // ---- Component frame ----

  // The database-kit connection object; a fresh, unconnected KitDatabase is
  // created when none is held, and the same object is answered again after.
  std::shared_ptr<KitDatabase> DBIA();
  // Assigns the host's connection object by reference; nullptr empties it.
  void DBIA(std::shared_ptr<KitDatabase> value);
  // Makes sure DBIA holds an object. Both arguments are ignored: no database
  // is opened from them.
  void init(const String& DbFullPath, const String& cPassword = {});

  // ---- Generic code lookups ----

  // The value of column strTo in the first row of table strTable whose column
  // strFrom equals strFromValue, as stored; Null when no row matches.
  Variant FromTo(const String& strFrom, const String& strFromValue, const String& strTo,
                 const String& strTable);
  // The name of code Code in the archive chosen by Style; "" for an unknown
  // code, an unknown Style or any failure.
  String CodeToName(const String& Code, uint8_t Style);
  // An account-set setting: its value trimmed, else its default as stored,
  // else "".
  String GetAccInfo(const String& SysID, const String& cName);

  // ---- Archive entry validation ----
  //
  // Archive types (iType): 0 inventory, 1 vendors, 2 customers, 3 warehouses,
  // 5 persons (flat archives); 4 receive/dispatch styles, 6 settlement
  // styles, 7 inventory classes, 8 vendor classes, 9 customer classes, 12
  // departments, 15 codes, 22 cost objects (graded archives). The checks
  // answer the row's code (or name, with IsReturnName) as stored, or "" when
  // the text names no row; a blank text or an unhandled type answers "" without
  // touching the database. The typed text goes into the SQL unescaped: a
  // single quote makes the engine reject it and the call fail.

  // A code or name of a graded archive (4, 6, 7, 8, 9, 12, 15, 22); with
  // IsEnd the row must be an end row. Styles and cost objects are searched in
  // the loaded table; the others are asked by code, then by name, walking
  // same-named rows to an end row. In vendor and customer classes that walk
  // can run past the last row and fail with 3021.
  String CheckDirGrade(const String& cString, bool IsEnd, int16_t iType, bool IsReturnName = false);
  // An inventory code or name. A code that exists is answered from the first
  // row of the inventory table, whichever row matched.
  String CheckInv(const String& cString, bool IsReturnName = false);
  // A code or name of a flat archive (0, 1, 2, 3, 5). Vendors are named by
  // their short name; customers are found by code only.
  String CheckDirNoGrade(const String& cString, int16_t iType, bool IsReturnName = false);
  // The length of a code of grade iGrade in a graded archive: the sum of the
  // first iGrade digits of the archive's coding scheme (a non-digit counts 0;
  // an unhandled type or missing setting gives 0). Fails with 6 past 32767.
  int16_t CodeGrade2Length(int16_t iGrade, int16_t iType);
  // The sum of the digits of a coding-scheme text. Fails with 13 at a
  // non-digit and with 6 past 32767.
  int16_t GetCodeLen(const String& strCode);
  // A department code or name, accepted only for a department bound to at
  // least one warehouse.
  String CheckAccDep(const String& cString, bool IsReturnName = false);
  // The same, for a department with a warehouse valued first-in-first-out,
  // last-in-first-out or by specific identification.
  String CheckAssDep(const String& cString, bool IsReturnName = false);
  // True when every warehouse is bound to a department and no department's
  // warehouses use more than one value style.
  bool CheckWareDep();

  // ---- Presentation helpers ----
  //
  // Numbers are shown with "," grouping and "." decimals, rounded halves away
  // from zero, whatever the machine's locale.

  // An amount with two decimals ("1,234.50"). An amount of exactly 0 shows
  // "0" when DispZero reads true, else "" (omitted: ""); a DispZero that is
  // no truth value fails with 13, but only for 0.
  String FormatNum(double Num, const Variant& DispZero = Variant::Missing());
  // The same with DecimalLength decimals (none for 0). A negative
  // DecimalLength fails with 5 unless the amount is 0.
  String FormatNum1(double Num, int16_t DecimalLength = 0,
                    const Variant& DispZero = Variant::Missing());
  // A typed or shown amount ("1,234.50", " -5 ") read back, rounded to six
  // decimals; "" or blanks give 0; a text that is no number fails with 13.
  double ReFormat(const String& str);
  // Splits a list entry "code   name". With bName omitted, false or any
  // number but -1, answers the first word and rewrites Code to " " + Code
  // trimmed; with bName true or Null, answers the last word and leaves Code.
  // A text without a space has neither part (""). A bName that is no number
  // or truth value fails with 13 before Code is touched.
  String SepCode(String& Code, const Variant& bName = Variant::Missing());
  // Selects the whole text of the focused control when it is a "TextBox";
  // any other control is left alone. Fails with the host's error (91 when
  // there is no focused control) and with 6 for a text over 32767 units.
  void TextSelected();

  // ---- Inventory and warehouse attributes ----

  // An item's main unit; "" for an unknown item or any failure.
  String InvCodeToUnit(const String& cCode);
  // An item's reference cost; 0 for an unknown item, a Null cost or any failure.
  double InvCodeToUnitPrice(const String& Code);
  // An item's inventory class code; "" for an unknown item or any failure.
  String InvCodeToClass(const String& cCode);
  // An item's batch-tracking switch as stored (Null when the switch is
  // Null); Boolean false for an unknown item.
  Variant InvIsBatch(const String& cCode);
  // The truth of the first column cType names for the item. For an unknown
  // item shows "该存货没有找到！" through the UI host's message box and
  // answers false. Fails with 94 for a Null value, 13 for one that is no
  // truth value.
  bool InvCodeIsTorF(const String& cCode, const String& cType);
  // A warehouse's value style; "" for an unknown warehouse or any failure.
  String WhCodeToValueStyle(const String& WhCode);
  // A warehouse's department; "" when it has none, is unknown, or on failure.
  String WhCodeToDep(const String& WhCode);
  // The value style of a department's warehouses (the first the database
  // lists); "" when it has none. Fails with 94 for a Null style.
  String DepCodeToValueStyle(const String& Code);
  // One warehouse of a department (the first the database lists); "" when
  // it has none.
  String DepCode2WhCode(const String& cDepCode);
  // Clears the list control Cbo, then adds "code" padded to 15 characters +
  // "name" for each warehouse (of department AccDep when given), in code
  // order, calling "Clear" and "AddItem" by name. Fails part-way, keeping
  // the items added, at a code over 15 characters (5) or a Null code (94);
  // 13 when Cbo holds no object, 91 for Nothing, 438 for a missing member.
  void FillCboCK(const Variant& Cbo, const String& AccDep = {});
  // Free items 1 and 2 of an item into blnFree1/blnFree2; both false for an
  // unknown item. The outputs are reset only once the query has opened.
  void GetInvUseFree(const String& strInvCode, bool& blnFree1, bool& blnFree2);
  // Free items 1 to 10 into elements 0 to 9 of the caller's array, as
  // stored; an unknown item leaves the array untouched. Fails with 13 when
  // blnFree holds no array, 9 when an index 0..9 is missing, 94 for a Null
  // into a Boolean array; elements stored before the failure stay.
  void GetInvUseFreeNew(const String& strInvCode, Variant& blnFree);
  // The inventory head and difference head of an item in a warehouse, from
  // the most specific head setting that applies (this warehouse and an item
  // prefix, any warehouse and an item prefix, the same for a class prefix,
  // then this warehouse's own setting). A Null head gives ""; when no setting
  // applies, the outputs keep what the caller put in them.
  void GetInvDifHead(const String& cWhCode, const String& cInvClass, const String& cInvCode,
                     String& strHeadCode, String& strDifCode);
  void GetInvDifHead(const String& cWhCode, const String& cInvClass, const String& cInvCode,
                     String& strHeadCode);
  void GetInvDifHead(const String& cWhCode, const String& cInvClass, const String& cInvCode);

  // ---- Periods and voucher links ----

  // The current period of inventory accounting: the one after the last
  // closed period, 12 once December is closed, and 0 (not 1) while no period
  // is closed.
  Variant CurPeriod();
  // Whether subsystem strSysID has closed period intMonth ("GL" reads the
  // general ledger's flag; any other id, letter case as given, its own);
  // false for a period without a row. Fails with 94 for a Null flag and with
  // the engine's error for an id without a flag column.
  bool GetMonthState(const String& strSysID, int16_t intMonth);
  // True when every warehouse's month marker ends in the current period's
  // two digits. iMonth is not read.
  bool IsEndHandled(uint8_t iMonth);
  // The latest keep date of the inventory ledger; the zero date (30
  // December 1899) for an empty ledger.
  Date SubMaxKeepDate();
  // The month (1 to 12) in which subsystem SysID's books start, or 0 when the
  // setting is missing or blank. Writes "IA" into an empty SysID. Fails with
  // 13 for a stored date that does not read as a date.
  uint8_t StartAccMonth(String& SysID);
  uint8_t StartAccMonth();
  // The voucher code of an adjustment-voucher line; the text "0" for a
  // missing line. Fails with 94 for a Null code.
  String JustID2Code(int32_t ID);
  // The business type of an adjustment-voucher line, from the ledger or
  // (IsCor) from the receipt or dispatch voucher it corresponds to; "" when
  // there is none.
  String JustIDs2CorBusType(int32_t ID, bool IsCor = false);
  // Whether desktop database DB holds a table (or, with IsQuery, a stored
  // query) named TName. Only "item not found" means absent: a null DB or
  // any other failure answers true. Never fails.
  bool ExistTableQueryDAO(const std::shared_ptr<dao::Database>& DB, const String& TName,
                          bool IsQuery = false);

  // ---- Late binding ----

  // The members in the fixed order of the interface.
  static std::span<const MemberInfo> Members();
  String TypeName() const override { return u"clsPub"; }
  Variant Invoke(StringView name, InvokeKind kind, std::span<Variant> args) override;

 private:
  // DBIA, created when empty.
  KitDatabase& Database();
  // The lookup record set shared by the archive checks, created when empty.
  std::shared_ptr<KitRecordset>& Lookup();

  std::shared_ptr<KitDatabase> dbia_;
  std::shared_ptr<KitRecordset> rs_lookup_;
};

// Creates an object by its programmatic identifier ("Kavrin.clsPub", letter
// case ignored). Throws Error 429 for any other identifier.
KAVRIN_API std::shared_ptr<Dispatch> CreateObject(StringView prog_id);

// The component's fixed identifiers.
namespace identifiers {
inline constexpr const char16_t* kProgId = u"Kavrin.clsPub";
}  // namespace identifiers

}  // namespace kavrin
