// The interface of clsPub in its fixed order, and late binding over it.
#include <algorithm>
#include <array>
#include <vector>

#include "component/CallArguments.h"
#include "kavrin/Dao.h"
#include "kavrin/Error.h"
#include "kavrin/clsPub.h"

namespace kavrin {

namespace {

using P = ParameterInfo;
constexpr bool kOptional = true;
constexpr bool kWritten = true;
constexpr VarType kString = VarType::String;
constexpr VarType kBoolean = VarType::Boolean;
constexpr VarType kInteger = VarType::Integer;
constexpr VarType kLong = VarType::Long;
constexpr VarType kByte = VarType::Byte;
constexpr VarType kDouble = VarType::Double;
constexpr VarType kVariant = VarType::Variant;
constexpr VarType kObject = VarType::Object;
constexpr VarType kNone = VarType::Empty;

constexpr P kNoParams[] = {{u"", kNone}};
constexpr std::span<const P> kNone0(kNoParams, 0);

constexpr P kDbiaPut[] = {{u"DBIA", kObject, false, false, u"KitDatabase"}};
constexpr P kCheckDirGrade[] = {{u"cString", kString},
                                {u"IsEnd", kBoolean},
                                {u"iType", kInteger},
                                {u"IsReturnName", kBoolean, kOptional}};
constexpr P kCheckInv[] = {{u"cString", kString}, {u"IsReturnName", kBoolean, kOptional}};
constexpr P kCheckDirNoGrade[] = {
    {u"cString", kString}, {u"iType", kInteger}, {u"IsReturnName", kBoolean, kOptional}};
constexpr P kGetAccInfo[] = {{u"SysID", kString}, {u"cName", kString}};
constexpr P kInit[] = {{u"DbFullPath", kString}, {u"cPassword", kString, kOptional}};
constexpr P kWhCode[] = {{u"WhCode", kString}};
constexpr P kFromTo[] = {
    {u"strFrom", kString}, {u"strFromValue", kString}, {u"strTo", kString}, {u"strTable", kString}};
constexpr P kSepCode[] = {{u"Code", kString, false, kWritten}, {u"bName", kVariant, kOptional}};
constexpr P kFormatNum[] = {{u"Num", kDouble}, {u"DispZero", kVariant, kOptional}};
constexpr P kReFormat[] = {{u"str", kString}};
constexpr P kCodeToName[] = {{u"Code", kString}, {u"Style", kByte}};
constexpr P kCCode[] = {{u"cCode", kString}};
constexpr P kCode[] = {{u"Code", kString}};
constexpr P kFormatNum1[] = {
    {u"Num", kDouble}, {u"DecimalLength", kInteger, kOptional}, {u"DispZero", kVariant, kOptional}};
constexpr P kJustID2Code[] = {{u"ID", kLong}};
constexpr P kExistTableQueryDAO[] = {{u"DB", kObject, false, false, u"Database"},
                                     {u"TName", kString},
                                     {u"IsQuery", kBoolean, kOptional}};
constexpr P kStartAccMonth[] = {{u"SysID", kString, kOptional, kWritten}};
constexpr P kJustIDs2CorBusType[] = {{u"ID", kLong}, {u"IsCor", kBoolean, kOptional}};
constexpr P kDepartmentCheck[] = {{u"cString", kString}, {u"IsReturnName", kBoolean, kOptional}};
constexpr P kInvCodeIsTorF[] = {{u"cCode", kString}, {u"cType", kString}};
constexpr P kDepCode2WhCode[] = {{u"cDepCode", kString}};
constexpr P kIsEndHandled[] = {{u"iMonth", kByte}};
constexpr P kCodeGrade2Length[] = {{u"iGrade", kInteger}, {u"iType", kInteger}};
constexpr P kFillCboCK[] = {{u"Cbo", kVariant}, {u"AccDep", kString, kOptional}};
constexpr P kGetMonthState[] = {{u"strSysID", kString}, {u"intMonth", kInteger}};
constexpr P kGetInvUseFreeNew[] = {{u"strInvCode", kString},
                                   {u"blnFree", kVariant, false, kWritten}};
constexpr P kGetInvUseFree[] = {{u"strInvCode", kString},
                                {u"blnFree1", kBoolean, false, kWritten},
                                {u"blnFree2", kBoolean, false, kWritten}};
constexpr P kGetInvDifHead[] = {{u"cWhCode", kString},
                                {u"cInvClass", kString},
                                {u"cInvCode", kString},
                                {u"strHeadCode", kString, kOptional, kWritten},
                                {u"strDifCode", kString, kOptional, kWritten}};
constexpr P kGetCodeLen[] = {{u"strCode", kString}};

using A = CallArguments;
using M = InvokeKind;

// A member as MemberInfo describes it, with the call of the typed member.
struct Member {
  int number;
  const char16_t* name;
  InvokeKind kind;
  std::span<const ParameterInfo> parameters;
  VarType result;
  Variant (*invoke)(clsPub& object, CallArguments& args);
  const char16_t* object_type = nullptr;
};

constexpr Member kMembers[] = {
    {1, u"DBIA", M::PropertyGet, kNone0, kObject,
     [](clsPub& o, A&) { return Variant(std::shared_ptr<Dispatch>(o.DBIA())); }, u"KitDatabase"},
    {2, u"DBIA", M::PropertyPutRef, kDbiaPut, kNone,
     [](clsPub& o, A& a) {
       o.DBIA(a.ObjectOf<KitDatabase>(0));
       return Variant();
     }},
    {3, u"CheckDirGrade", M::Method, kCheckDirGrade, kString,
     [](clsPub& o, A& a) {
       return Variant(o.CheckDirGrade(a.Text(0), a.Boolean(1), a.Integer(2), a.Boolean(3)));
     }},
    {4, u"CheckInv", M::Method, kCheckInv, kString,
     [](clsPub& o, A& a) { return Variant(o.CheckInv(a.Text(0), a.Boolean(1))); }},
    {5, u"CheckDirNoGrade", M::Method, kCheckDirNoGrade, kString,
     [](clsPub& o, A& a) {
       return Variant(o.CheckDirNoGrade(a.Text(0), a.Integer(1), a.Boolean(2)));
     }},
    {6, u"TextSelected", M::Method, kNone0, kNone,
     [](clsPub& o, A&) {
       o.TextSelected();
       return Variant();
     }},
    {7, u"GetAccInfo", M::Method, kGetAccInfo, kString,
     [](clsPub& o, A& a) { return Variant(o.GetAccInfo(a.Text(0), a.Text(1))); }},
    {8, u"init", M::Method, kInit, kNone,
     [](clsPub& o, A& a) {
       o.init(a.Text(0), a.Text(1));
       return Variant();
     }},
    {9, u"WhCodeToValueStyle", M::Method, kWhCode, kString,
     [](clsPub& o, A& a) { return Variant(o.WhCodeToValueStyle(a.Text(0))); }},
    {10, u"FromTo", M::Method, kFromTo, kVariant,
     [](clsPub& o, A& a) { return o.FromTo(a.Text(0), a.Text(1), a.Text(2), a.Text(3)); }},
    {11, u"SepCode", M::Method, kSepCode, kString,
     [](clsPub& o, A& a) {
       String& code = a.TextRef(0);
       return Variant(o.SepCode(code, a.Value(1)));
     }},
    {12, u"FormatNum", M::Method, kFormatNum, kString,
     [](clsPub& o, A& a) { return Variant(o.FormatNum(a.Double(0), a.Value(1))); }},
    {13, u"ReFormat", M::Method, kReFormat, kDouble,
     [](clsPub& o, A& a) { return Variant(o.ReFormat(a.Text(0))); }},
    {14, u"CodeToName", M::Method, kCodeToName, kString,
     [](clsPub& o, A& a) { return Variant(o.CodeToName(a.Text(0), a.Byte(1))); }},
    {15, u"InvCodeToUnit", M::Method, kCCode, kString,
     [](clsPub& o, A& a) { return Variant(o.InvCodeToUnit(a.Text(0))); }},
    {16, u"WhCodeToDep", M::Method, kWhCode, kString,
     [](clsPub& o, A& a) { return Variant(o.WhCodeToDep(a.Text(0))); }},
    {17, u"InvCodeToUnitPrice", M::Method, kCode, kDouble,
     [](clsPub& o, A& a) { return Variant(o.InvCodeToUnitPrice(a.Text(0))); }},
    {18, u"InvCodeToClass", M::Method, kCCode, kString,
     [](clsPub& o, A& a) { return Variant(o.InvCodeToClass(a.Text(0))); }},
    {19, u"InvIsBatch", M::Method, kCCode, kVariant,
     [](clsPub& o, A& a) { return o.InvIsBatch(a.Text(0)); }},
    {20, u"DepCodeToValueStyle", M::Method, kCode, kString,
     [](clsPub& o, A& a) { return Variant(o.DepCodeToValueStyle(a.Text(0))); }},
    {21, u"CurPeriod", M::Method, kNone0, kVariant, [](clsPub& o, A&) { return o.CurPeriod(); }},
    {22, u"FormatNum1", M::Method, kFormatNum1, kString,
     [](clsPub& o, A& a) { return Variant(o.FormatNum1(a.Double(0), a.Integer(1), a.Value(2))); }},
    {23, u"JustID2Code", M::Method, kJustID2Code, kString,
     [](clsPub& o, A& a) { return Variant(o.JustID2Code(a.Long(0))); }},
    {24, u"ExistTableQueryDAO", M::Method, kExistTableQueryDAO, kBoolean,
     [](clsPub& o, A& a) {
       return Variant(o.ExistTableQueryDAO(a.ObjectOf<dao::Database>(0), a.Text(1), a.Boolean(2)));
     }},
    {25, u"CheckWareDep", M::Method, kNone0, kBoolean,
     [](clsPub& o, A&) { return Variant(o.CheckWareDep()); }},
    {26, u"StartAccMonth", M::Method, kStartAccMonth, kByte,
     [](clsPub& o, A& a) { return Variant(o.StartAccMonth(a.TextRef(0))); }},
    {27, u"JustIDs2CorBusType", M::Method, kJustIDs2CorBusType, kString,
     [](clsPub& o, A& a) { return Variant(o.JustIDs2CorBusType(a.Long(0), a.Boolean(1))); }},
    {28, u"CheckAssDep", M::Method, kDepartmentCheck, kString,
     [](clsPub& o, A& a) { return Variant(o.CheckAssDep(a.Text(0), a.Boolean(1))); }},
    {29, u"InvCodeIsTorF", M::Method, kInvCodeIsTorF, kBoolean,
     [](clsPub& o, A& a) { return Variant(o.InvCodeIsTorF(a.Text(0), a.Text(1))); }},
    {30, u"CheckAccDep", M::Method, kDepartmentCheck, kString,
     [](clsPub& o, A& a) { return Variant(o.CheckAccDep(a.Text(0), a.Boolean(1))); }},
    {31, u"SubMaxKeepDate", M::Method, kNone0, VarType::Date,
     [](clsPub& o, A&) { return Variant(o.SubMaxKeepDate()); }},
    {32, u"DepCode2WhCode", M::Method, kDepCode2WhCode, kString,
     [](clsPub& o, A& a) { return Variant(o.DepCode2WhCode(a.Text(0))); }},
    {33, u"IsEndHandled", M::Method, kIsEndHandled, kBoolean,
     [](clsPub& o, A& a) { return Variant(o.IsEndHandled(a.Byte(0))); }},
    {34, u"CodeGrade2Length", M::Method, kCodeGrade2Length, kInteger,
     [](clsPub& o, A& a) { return Variant(o.CodeGrade2Length(a.Integer(0), a.Integer(1))); }},
    {35, u"FillCboCK", M::Method, kFillCboCK, kNone,
     [](clsPub& o, A& a) {
       o.FillCboCK(a.Value(0), a.Text(1));
       return Variant();
     }},
    {36, u"GetMonthState", M::Method, kGetMonthState, kBoolean,
     [](clsPub& o, A& a) { return Variant(o.GetMonthState(a.Text(0), a.Integer(1))); }},
    {37, u"GetInvUseFreeNew", M::Method, kGetInvUseFreeNew, kNone,
     [](clsPub& o, A& a) {
       o.GetInvUseFreeNew(a.Text(0), a.Value(1));
       return Variant();
     }},
    {38, u"GetInvUseFree", M::Method, kGetInvUseFree, kNone,
     [](clsPub& o, A& a) {
       o.GetInvUseFree(a.Text(0), a.BooleanRef(1), a.BooleanRef(2));
       return Variant();
     }},
    {39, u"GetInvDifHead", M::Method, kGetInvDifHead, kNone,
     [](clsPub& o, A& a) {
       o.GetInvDifHead(a.Text(0), a.Text(1), a.Text(2), a.TextRef(3), a.TextRef(4));
       return Variant();
     }},
    {40, u"GetCodeLen", M::Method, kGetCodeLen, kInteger,
     [](clsPub& o, A& a) { return Variant(o.GetCodeLen(a.Text(0))); }},
};

constexpr auto kMemberInfos = [] {
  std::array<MemberInfo, std::size(kMembers)> infos{};
  for (size_t i = 0; i < infos.size(); ++i) {
    const Member& m = kMembers[i];
    infos[i] = {m.number, m.name, m.kind, m.parameters, m.result, m.object_type};
  }
  return infos;
}();

bool IsPut(InvokeKind kind) {
  return kind == InvokeKind::PropertyPut || kind == InvokeKind::PropertyPutRef;
}

const Member* FindMember(StringView name, InvokeKind kind) {
  for (const auto& member : kMembers) {
    if (EqualsNoCase(member.name, name) && IsPut(member.kind) == IsPut(kind)) return &member;
  }
  return nullptr;
}

char16_t Folded(char16_t c) {
  return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
}

// Edits (insert, delete, replace) between two names, letter case ignored.
size_t Distance(StringView a, StringView b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j)
    row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t replaced = diagonal + (Folded(a[i - 1]) == Folded(b[j - 1]) ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
    }
  }
  return row[b.size()];
}

// 438 naming the member asked for and, when one is close enough to be a
// slip of the keyboard, the member meant.
Error MemberNotFound(StringView type_name, StringView name, InvokeKind kind) {
  const Error error = Error::Standard(errors::kMemberNotFound, String(type_name));
  constexpr size_t kLongest = 64;  // longer than any member's name: no suggestion, shown cut
  String detail = String(type_name) + u" has no member " + String(name.substr(0, kLongest)) +
                  (name.size() > kLongest ? u"…" : u"");
  if (FindMember(name, IsPut(kind) ? InvokeKind::Method : InvokeKind::PropertyPut)) {
    detail += IsPut(kind) ? u" that can be assigned" : u" that can be called";
    return WithDetail(error, detail);
  }
  const MemberInfo* nearest = nullptr;
  size_t best = std::max<size_t>(2, name.size() / 3) + 1;
  for (const auto& member :
       name.size() <= kLongest ? std::span(kMemberInfos) : std::span<const MemberInfo>()) {
    const size_t d = Distance(name, member.name);
    if (d < best && IsPut(member.kind) == IsPut(kind)) {
      best = d;
      nearest = &member;
    }
  }
  if (nearest) detail += u"; did you mean " + String(nearest->name) + u"?";
  return WithDetail(error, detail);
}

}  // namespace

std::span<const MemberInfo> clsPub::Members() {
  return kMemberInfos;
}

Variant clsPub::Invoke(StringView name, InvokeKind kind, std::span<Variant> args) {
  const Member* member = FindMember(name, kind);
  if (!member) throw MemberNotFound(TypeName(), name, kind);
  CallArguments arguments(args, kMemberInfos[static_cast<size_t>(member - kMembers)]);
  return member->invoke(*this, arguments);
}

std::shared_ptr<Dispatch> CreateObject(StringView prog_id) {
  if (EqualsNoCase(prog_id, identifiers::kProgId)) return std::make_shared<clsPub>();
  throw Error::Runtime(errors::kCannotCreateObject);
}

}  // namespace kavrin
