// kavrin::Error: the failure of a call, as the platform reports it.
//
// Every failing call throws an Error carrying the platform's error number, the
// source that raised it and its description. Numbers are the original
// platform's: the runtime's (5, 6, 9, 13, 91, 94, 438, 449, 450), ADO's for the
// data layer (3021, 3265, 3704, 3709) and provider numbers (negative, such as
// -2147217900) carrying the engine's own message for everything else.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "kavrin/Export.h"
#include "kavrin/String.h"

namespace kavrin {

// The runtime's error numbers used by the component and its platform.
namespace errors {
inline constexpr int32_t kInvalidProcedureCall = 5;  // Invalid procedure call or argument
inline constexpr int32_t kOverflow = 6;
inline constexpr int32_t kSubscriptOutOfRange = 9;
inline constexpr int32_t kTypeMismatch = 13;
inline constexpr int32_t kObjectNotSet = 91;
inline constexpr int32_t kInvalidUseOfNull = 94;
inline constexpr int32_t kMemberNotFound = 438;
inline constexpr int32_t kArgumentNotOptional = 449;
inline constexpr int32_t kWrongArgumentCount = 450;
// Data layer (ADO numbering; 3265 is also DAO's "item not found").
inline constexpr int32_t kNoCurrentRecord = 3021;
inline constexpr int32_t kItemNotFound = 3265;
inline constexpr int32_t kObjectClosed = 3704;
inline constexpr int32_t kNoConnection = 3709;
// Provider errors carrying the engine's message (OLE DB HRESULTs as ADO shows them).
inline constexpr int32_t kProviderSyntax = -2147217900;   // rejected statement
inline constexpr int32_t kProviderNoTable = -2147217865;  // unknown table or view
inline constexpr int32_t kProviderTimeout = -2147217871;  // lock or busy timeout
inline constexpr int32_t kProviderFailure = -2147467259;  // cannot open, I/O, corrupt
}  // namespace errors

class KAVRIN_API Error : public std::exception {
 public:
  Error(int32_t number, String source, String description);

  // An error of the runtime with its standard description, raised by the
  // component itself (source "Kavrin").
  static Error Runtime(int32_t number);
  // An error with its standard description and the given source.
  static Error Standard(int32_t number, String source);

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
// number, or "Application-defined or object-defined error" for any other.
KAVRIN_API String StandardDescription(int32_t number);

// The source the component's own runtime errors carry.
KAVRIN_API const String& ComponentSource();

}  // namespace kavrin
