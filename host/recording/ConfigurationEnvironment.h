#pragma once

#include <set>
#include <string>
#include <string_view>

namespace emstatus::host {

/// The variables of the process environment whose values an EM_STATUS.ini refers to. [any thread]
std::set<std::string> EnvironmentOf(std::string_view configurationText);

}  // namespace emstatus::host
