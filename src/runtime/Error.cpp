#include "kavrin/Error.h"

namespace kavrin {

String StandardDescription(int32_t number) {
  switch (number) {
    case 5:
      return u"Invalid procedure call or argument";
    case 6:
      return u"Overflow";
    case 9:
      return u"Subscript out of range";
    case 11:
      return u"Division by zero";
    case 13:
      return u"Type mismatch";
    case 91:
      return u"Object variable or With block variable not set";
    case 94:
      return u"Invalid use of Null";
    case 438:
      return u"Object doesn't support this property or method";
    case 429:
      return u"ActiveX component can't create object";
    case 449:
      return u"Argument not optional";
    case 450:
      return u"Wrong number of arguments or invalid property assignment";
    case 3021:
      return u"Either BOF or EOF is True, or the current record has been deleted. Requested "
             u"operation requires a current record.";
    case 3265:
      return u"Item cannot be found in the collection corresponding to the requested name or "
             u"ordinal.";
    case 3705:
      return u"Operation is not allowed when the object is open.";
    case 3704:
      return u"Operation is not allowed when the object is closed.";
    case 3709:
      return u"The connection cannot be used to perform this operation. It is either closed or "
             u"invalid in this context.";
    default:
      return u"Application-defined or object-defined error";
  }
}

const String& ComponentSource() {
  static const String source = u"Kavrin";
  return source;
}

Error::Error(int32_t number, String source, String description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {
  what_ = ToUtf8(description_) + " (" + std::to_string(number_) + ")";
}

Error Error::Runtime(int32_t number) {
  return Standard(number, ComponentSource());
}

Error Error::Standard(int32_t number, String source) {
  return Error(number, std::move(source), StandardDescription(number));
}

}  // namespace kavrin
