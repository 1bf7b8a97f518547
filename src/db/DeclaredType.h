// The value type of a column read from its declared SQL type: BIT is a
// Boolean, TINYINT a Byte, SMALLINT an Integer, INT a Long, the wide and
// fractional numbers a Double, the date types a Date, the character types a
// String. Anything else (an expression without a declared type) answers
// VarType::Variant: the engine's storage class decides.
#pragma once

#include "kavrin/String.h"
#include "kavrin/Variant.h"

namespace kavrin::db {

VarType TypeFromDeclared(StringView declared);

// `value` as read from storage, turned into `type` where the storage allows:
// integers into Booleans, Bytes and Integers, numbers and texts into Dates,
// numbers into Doubles. Values that do not fit stay as they are.
Variant CoerceStored(Variant value, VarType type);

}  // namespace kavrin::db
