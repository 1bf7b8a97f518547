// Arguments and answers of the kavrin host as JSON.
//
// An argument is read from JSON: strings, numbers, true/false and null become
// String, Long or Double, Boolean and Null; objects with a "$" key stand for
// the other values ({"$missing":true}, {"$empty":true}, {"$date":...},
// {"$array":[...]}, {"$list":[...]}, {"$dao":"PATH"}, {"$nothing":true}).
// A value is written as {"type":T,"value":...}.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "kavrin/Variant.h"

namespace kavrin::tool {

// An argument the host cannot read: a usage error.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The argument a command-line ARG stands for: JSON when it parses as JSON,
// otherwise the plain text.
Variant ArgumentFromCommandLine(const std::string& arg);
// The argument a JSON value stands for. Throws UsageError.
Variant ArgumentFromJson(const nlohmann::ordered_json& value);

nlohmann::ordered_json ValueToJson(const Variant& value);

}  // namespace kavrin::tool
