#include "kavrin/Error.h"

namespace kavrin {

namespace {

using namespace errors;
using namespace sources;

constexpr StringView kAnySource = u"";  // 438: the class of the object called
constexpr StringView kEngineMessage = u"";
// Texts that several sources raise alike.
constexpr StringView kNoCurrentRecordText =
    u"Either BOF or EOF is True, or the current record has been deleted. Requested operation "
    u"requires a current record.";
constexpr StringView kNoConnectionText =
    u"The connection cannot be used to perform this operation. It is either closed or invalid "
    u"in this context.";
constexpr StringView kDaoItemNotFoundText = u"Item not found in this collection.";

constexpr ErrorEntry kCatalogue[] = {
    {kInvalidProcedureCall, kComponent, u"Invalid procedure call or argument"},
    {kOverflow, kComponent, u"Overflow"},
    {kSubscriptOutOfRange, kComponent, u"Subscript out of range"},
    {kDivisionByZero, kComponent, u"Division by zero"},
    {kTypeMismatch, kComponent, u"Type mismatch"},
    {kObjectNotSet, kComponent, u"Object variable or With block variable not set"},
    {kInvalidUseOfNull, kComponent, u"Invalid use of Null"},
    {kObjectRequired, kComponent, u"Object required"},
    {kCannotCreateObject, kComponent, u"ActiveX component can't create object"},
    {kMemberNotFound, kAnySource, u"Object doesn't support this property or method"},
    {kArgumentNotOptional, kComponent, u"Argument not optional"},
    {kWrongArgumentCount, kComponent, u"Wrong number of arguments or invalid property assignment"},
    {kUnknownColumn, kKitRecordset,
     u"The kit does not recognize '{}' as a valid field name or expression."},
    {kCriteriaSyntax, kKitRecordset, u"Syntax error in criteria expression: {}"},
    {kCriteriaTypeMismatch, kKitRecordset, u"Data type mismatch in criteria expression."},
    {kNoCurrentRecord, kAdoRecordset, kNoCurrentRecordText},
    {kNoCurrentRecord, kAdoField, kNoCurrentRecordText},
    {kItemNotFound, kAdoFields,
     u"Item cannot be found in the collection corresponding to the requested name or ordinal."},
    {kItemNotFound, kDaoTableDefs, kDaoItemNotFoundText},
    {kItemNotFound, kDaoQueryDefs, kDaoItemNotFoundText},
    {kObjectInvalid, kDaoDatabase, u"Object invalid or no longer set."},
    {kObjectClosed, kAdoRecordset, u"Operation is not allowed when the object is closed."},
    {kObjectOpen, kAdoRecordset, u"Operation is not allowed when the object is open."},
    {kNoConnection, kAdoRecordset, kNoConnectionText},
    {kNoConnection, kKitDatabase, kNoConnectionText},
    {kProviderSyntax, kSqlite, kEngineMessage},
    {kProviderSyntax, kOdbc, kEngineMessage},
    {kProviderNoTable, kSqlite, kEngineMessage},
    {kProviderNoTable, kOdbc, kEngineMessage},
    {kProviderTimeout, kSqlite, kEngineMessage},
    {kProviderTimeout, kOdbc, kEngineMessage},
    {kProviderFailure, kSqlite, kEngineMessage},
    {kProviderFailure, kOdbc, kEngineMessage},
    {kProviderFailure, kComponent, kEngineMessage},  // a connection string of no known form
};

constexpr StringView kDetailMark = u"{}";

// The entry of `number` raised by `source`: the exact one, else the
// number's first.
const ErrorEntry* Find(int32_t number, StringView source) {
  const ErrorEntry* first = nullptr;
  for (const ErrorEntry& entry : kCatalogue) {
    if (entry.number != number) continue;
    if (entry.source == source) return &entry;
    if (!first) first = &entry;
  }
  return first;
}

String Describe(int32_t number, StringView source, StringView detail) {
  const ErrorEntry* entry = Find(number, source);
  if (!entry || entry->description.empty()) return u"Application-defined or object-defined error";
  String description(entry->description);
  if (const size_t mark = description.find(kDetailMark); mark != String::npos) {
    description.replace(mark, kDetailMark.size(), detail);
  }
  return description;
}

}  // namespace

std::span<const ErrorEntry> ErrorCatalogue() {
  return kCatalogue;
}

String StandardDescription(int32_t number) {
  return Describe(number, {}, {});
}

const String& ComponentSource() {
  static const String source(sources::kComponent);
  return source;
}

Error::Error(int32_t number, String source, String description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {
  what_ = ToUtf8(description_) + " (" + std::to_string(number_) + ")";
}

Error Error::Runtime(int32_t number) {
  return Standard(number, sources::kComponent);
}

Error Error::Standard(int32_t number, StringView source) {
  return Standard(number, source, {});
}

Error Error::Standard(int32_t number, StringView source, StringView detail) {
  return Error(number, String(source), Describe(number, source, detail));
}

}  // namespace kavrin
