// The help texts of the kavrin command and its subcommands.
#pragma once

#include <string_view>

namespace kavrin::tool {

// The overview printed by `kavrin --help` and after a usage error.
extern const std::string_view kOverviewHelp;

// The help of one subcommand, or an empty view for an unknown one.
std::string_view CommandHelp(std::string_view command);

}  // namespace kavrin::tool
