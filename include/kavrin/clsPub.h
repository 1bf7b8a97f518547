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

  String CheckDirGrade(const String& cString, bool IsEnd, int16_t iType, bool IsReturnName = false);
  String CheckInv(const String& cString, bool IsReturnName = false);
  String CheckDirNoGrade(const String& cString, int16_t iType, bool IsReturnName = false);
  int16_t CodeGrade2Length(int16_t iGrade, int16_t iType);
  int16_t GetCodeLen(const String& strCode);
  String CheckAccDep(const String& cString, bool IsReturnName = false);
  String CheckAssDep(const String& cString, bool IsReturnName = false);
  bool CheckWareDep();

  // ---- Presentation helpers ----

  String FormatNum(double Num, const Variant& DispZero = Variant::Missing());
  String FormatNum1(double Num, int16_t DecimalLength = 0,
                    const Variant& DispZero = Variant::Missing());
  double ReFormat(const String& str);
  // Rewrites Code when the code part is asked for.
  String SepCode(String& Code, const Variant& bName = Variant::Missing());
  void TextSelected();

  // ---- Inventory and warehouse attributes ----

  String InvCodeToUnit(const String& cCode);
  double InvCodeToUnitPrice(const String& Code);
  String InvCodeToClass(const String& cCode);
  Variant InvIsBatch(const String& cCode);
  bool InvCodeIsTorF(const String& cCode, const String& cType);
  String WhCodeToValueStyle(const String& WhCode);
  String WhCodeToDep(const String& WhCode);
  String DepCodeToValueStyle(const String& Code);
  String DepCode2WhCode(const String& cDepCode);
  void FillCboCK(const Variant& Cbo, const String& AccDep = {});
  void GetInvUseFree(const String& strInvCode, bool& blnFree1, bool& blnFree2);
  void GetInvUseFreeNew(const String& strInvCode, Variant& blnFree);
  void GetInvDifHead(const String& cWhCode, const String& cInvClass, const String& cInvCode,
                     String& strHeadCode, String& strDifCode);
  void GetInvDifHead(const String& cWhCode, const String& cInvClass, const String& cInvCode,
                     String& strHeadCode);
  void GetInvDifHead(const String& cWhCode, const String& cInvClass, const String& cInvCode);

  // ---- Periods and voucher links ----

  Variant CurPeriod();
  bool GetMonthState(const String& strSysID, int16_t intMonth);
  bool IsEndHandled(uint8_t iMonth);
  Date SubMaxKeepDate();
  // Writes "IA" into an empty SysID.
  uint8_t StartAccMonth(String& SysID);
  uint8_t StartAccMonth();
  String JustID2Code(int32_t ID);
  String JustIDs2CorBusType(int32_t ID, bool IsCor = false);
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
inline constexpr const char16_t* kClassId = u"{6E1B2F64-3C55-4B7B-9A2E-5D1F0C8A7B31}";
inline constexpr const char16_t* kInterfaceId = u"{0F6B7E1A-9D24-4C3E-8B5F-2A7C4D9E6B02}";
inline constexpr const char16_t* kLibraryId = u"{B3D9C0E5-71A8-4F26-A4C1-8E2F5B6D3A47}";
inline constexpr const char16_t* kInterfaceName = u"_clsPub";
inline constexpr uint16_t kTypeLibraryMajor = 1;
inline constexpr uint16_t kTypeLibraryMinor = 0;
}  // namespace identifiers

}  // namespace kavrin
