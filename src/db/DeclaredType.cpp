#include "db/DeclaredType.h"

#include <cmath>
#include <limits>

#include "kavrin/OleDate.h"

namespace kavrin::db {

namespace {

String UpperBaseName(StringView declared) {
  String upper;
  for (char16_t c : declared) {
    if (c == u'(') break;
    upper.push_back((c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c);
  }
  return Trim(upper);
}

bool IsOneOf(const String& name, std::initializer_list<StringView> names) {
  for (StringView n : names) {
    if (name == n) return true;
  }
  return false;
}

}  // namespace

VarType TypeFromDeclared(StringView declared) {
  const String name = UpperBaseName(declared);
  if (name.empty()) return VarType::Variant;
  if (name == u"BIT" || name == u"BOOLEAN" || name == u"BOOL") return VarType::Boolean;
  if (name == u"TINYINT") return VarType::Byte;
  if (name == u"SMALLINT" || name == u"INT2") return VarType::Integer;
  if (IsOneOf(name, {u"INT", u"INTEGER", u"INT4", u"SERIAL"})) return VarType::Long;
  if (IsOneOf(name, {u"BIGINT", u"INT8", u"FLOAT", u"FLOAT4", u"FLOAT8", u"REAL", u"DOUBLE",
                     u"DOUBLE PRECISION", u"MONEY", u"SMALLMONEY", u"DECIMAL", u"NUMERIC"})) {
    return VarType::Double;
  }
  if (IsOneOf(name, {u"DATE", u"DATETIME", u"SMALLDATETIME", u"DATETIME2", u"TIMESTAMP"})) {
    return VarType::Date;
  }
  if (IsOneOf(name, {u"CHAR", u"VARCHAR", u"NCHAR", u"NVARCHAR", u"TEXT", u"NTEXT", u"CHARACTER",
                     u"CHARACTER VARYING", u"CITEXT", u"BPCHAR"})) {
    return VarType::String;
  }
  return VarType::Variant;
}

Variant CoerceStored(Variant value, VarType type) {
  if (value.IsNull()) return value;
  switch (type) {
    case VarType::Boolean:
      if (value.type() == VarType::Long) return value.AsLong() != 0;
      if (value.type() == VarType::Double) return value.AsDouble() != 0.0;
      break;
    case VarType::Byte:
      if (value.type() == VarType::Long && value.AsLong() >= 0 && value.AsLong() <= 255) {
        return static_cast<uint8_t>(value.AsLong());
      }
      break;
    case VarType::Integer:
      if (value.type() == VarType::Long && value.AsLong() >= INT16_MIN &&
          value.AsLong() <= INT16_MAX) {
        return static_cast<int16_t>(value.AsLong());
      }
      break;
    case VarType::Double:
      if (value.type() == VarType::Long) return static_cast<double>(value.AsLong());
      break;
    case VarType::Date:
      if (value.IsString()) {
        if (auto date = ParseDate(value.AsString())) return *date;
      } else if (value.type() == VarType::Long) {
        return Date{static_cast<double>(value.AsLong())};
      } else if (value.type() == VarType::Double) {
        return Date{value.AsDouble()};
      }
      break;
    case VarType::String:
      if (value.type() == VarType::Long) return String(FromUtf8(std::to_string(value.AsLong())));
      break;
    default:
      break;
  }
  return value;
}

}  // namespace kavrin::db
