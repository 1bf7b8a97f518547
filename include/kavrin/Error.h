// kavrin::Error: the failure of a call, as the platform reports it.
//
// Every failing call throws an Error carrying the platform's error number, the
// source that raised it and its description. The catalogue below holds every
// number the library raises with the sources that raise it and the platform's
// standard description: the runtime's numbers (5, 6, 9, 13, 91, 94, 424, 429,
// 438, 449, 450), the kit's criteria errors (3070, 3077, 3464), ADO's numbers
// for the data layer (3021, 3265, 3704, 3705, 3709), DAO's for a desktop
// database (3265, 3420) and provider numbers (negative, such as -2147217900)
// carrying the engine's own message.
#pragma once

#include <cstdint>
#include <exception>
#include <span>
#include <string>

#include "kavrin/Export.h"
#include "kavrin/String.h"

namespace kavrin {

namespace errors {
// The runtime's.
inline constexpr int32_t kInvalidProcedureCall = 5;  // Invalid procedure call or argument
inline constexpr int32_t kOverflow = 6;
inline constexpr int32_t kSubscriptOutOfRange = 9;
inline constexpr int32_t kDivisionByZero = 11;
inline constexpr int32_t kTypeMismatch = 13;
inline constexpr int32_t kObjectNotSet = 91;
inline constexpr int32_t kInvalidUseOfNull = 94;
inline constexpr int32_t kObjectRequired = 424;      // a call on a value that holds no object
inline constexpr int32_t kCannotCreateObject = 429;  // CreateObject with an unknown identifier
inline constexpr int32_t kMemberNotFound = 438;
inline constexpr int32_t kArgumentNotOptional = 449;
inline constexpr int32_t kWrongArgumentCount = 450;
// The kit's record sets: criteria naming an unknown column, unreadable
// criteria, a value the column's type cannot be compared with.
inline constexpr int32_t kUnknownColumn = 3070;
inline constexpr int32_t kCriteriaSyntax = 3077;
inline constexpr int32_t kCriteriaTypeMismatch = 3464;
// Data layer (ADO numbering; 3265 is also DAO's "item not found").
inline constexpr int32_t kNoCurrentRecord = 3021;
inline constexpr int32_t kItemNotFound = 3265;
inline constexpr int32_t kObjectClosed = 3704;
inline constexpr int32_t kObjectOpen = 3705;
inline constexpr int32_t kNoConnection = 3709;
// A desktop database used after Close (DAO numbering).
inline constexpr int32_t kObjectInvalid = 3420;
// Provider errors carrying the engine's message (OLE DB HRESULTs as ADO shows them).
inline constexpr int32_t kProviderSyntax = -2147217900;   // rejected statement
inline constexpr int32_t kProviderNoTable = -2147217865;  // unknown table or view
inline constexpr int32_t kProviderTimeout = -2147217871;  // lock or busy timeout
inline constexpr int32_t kProviderFailure = -2147467259;  // cannot open, I/O, corrupt
}  // namespace errors

// The sources errors carry. Error 438 carries the type name of the object
// called instead.
namespace sources {
inline constexpr StringView kComponent = u"Kavrin";  // runtime errors, connection strings
inline constexpr StringView kKitDatabase = u"KitDatabase";
inline constexpr StringView kKitRecordset = u"KitRecordset";
inline constexpr StringView kAdoRecordset = u"ADODB.Recordset";
inline constexpr StringView kAdoFields = u"ADODB.Fields";
inline constexpr StringView kAdoField = u"ADODB.Field";
inline constexpr StringView kDaoDatabase = u"DAO.Database";
inline constexpr StringView kDaoTableDefs = u"DAO.TableDefs";
inline constexpr StringView kDaoQueryDefs = u"DAO.QueryDefs";
inline constexpr StringView kSqlite = u"Kavrin.SQLite";  // the SQLite engine's errors
inline constexpr StringView kOdbc = u"Kavrin.ODBC";      // the ODBC driver's errors
}  // namespace sources

// One error the library raises: a number, a source raising it (empty for
// 438, raised under the class name of the object called) and the standard
// description. "{}" in a description stands for the detail its raiser adds;
// an empty description means the engine's own message.
struct ErrorEntry {
  int32_t number;
  StringView source;
  StringView description;
};

// Every error the library raises, by number; a number raised by several
// sources has one entry per source.
KAVRIN_API std::span<const ErrorEntry> ErrorCatalogue();

class KAVRIN_API Error : public std::exception {
 public:
  Error(int32_t number, String source, String description);

  // An error of the runtime with its standard description, raised by the
  // component itself (source "Kavrin").
  static Error Runtime(int32_t number);
  // An error with the standard description it has from `source`.
  static Error Standard(int32_t number, StringView source);
  // The same, with `detail` in the place the description keeps for it.
  static Error Standard(int32_t number, StringView source, StringView detail);

  int32_t number() const noexcept { return number_; }
  const String& source() const noexcept { return source_; }
  const String& description() const noexcept { return description_; }

  // "description (number)" in UTF-8.
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  int32_t number_;
  String source_;
  String description_;
  std::string what_;
};

// The platform's standard description for a runtime or data-layer error
// number (ADO's where ADO and DAO both have the number), or
// "Application-defined or object-defined error" for any other.
KAVRIN_API String StandardDescription(int32_t number);

// The source the component's own runtime errors carry.
KAVRIN_API const String& ComponentSource();

}  // namespace kavrin
