// clsPub's member table as `kavrin methods` prints it.
#pragma once

#include <string>

namespace kavrin::tool {

// One line per member: number, signature in the platform's notation, and
// what kind of member it is.
std::string MethodsAsText();
// The same as a JSON array of {"number","name","kind","parameters","result"}.
std::string MethodsAsJson();

}  // namespace kavrin::tool
