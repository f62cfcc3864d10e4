#pragma once

#include <string>
#include <string_view>

#include "config/RequestString.h"

namespace emstatus {

/// Replaces "%NAME%" by the value of the process environment variable NAME (nothing when it is not set, or
/// for "%%"). A "%" that opens no complete placeholder stays. The result of a replacement is cut at 259
/// characters; a text without a placeholder is given back whole.
std::string ExpandEnvironment(const std::string& text);

/// Replaces "%NAME%" by the value of a configuration variable (nothing when it is unknown) and "%%" by "%".
/// A placeholder that any other character interrupts stays as it is.
std::string ExpandVariables(std::string_view text, const ConfigVariables& variables);

}  // namespace emstatus
