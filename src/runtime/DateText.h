// The pieces dates are written with: "yyyy-mm-dd" and "hh:mm:ss".
#pragma once

#include "kavrin/OleDate.h"
#include "kavrin/String.h"

namespace kavrin {

String IsoDay(const DateParts& parts);
String IsoTime(const DateParts& parts);

}  // namespace kavrin
