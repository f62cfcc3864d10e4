#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// "%NAME%" in a configuration, replaced as the module does. [any thread that nobody sets the environment
/// beside]
namespace emstatus::host {

/// Values of configuration variables by name.
using ConfigurationVariables = std::map<std::string, std::string, std::less<>>;

/// The name of the placeholder that begins at `text[at]`, a "%"; empty for "%%". Nothing when another
/// character than a letter, a digit or "_" comes before the second "%".
std::optional<std::string_view> PlaceholderAt(std::string_view text, std::size_t at);

/// Replaces placeholders by variables of the process environment, unset ones by nothing. A text in which
/// something was replaced is cut at 259 characters.
std::string WithEnvironment(const std::string& text);

/// Replaces placeholders by configuration variables, unknown ones by nothing, and "%%" by "%".
std::string WithVariables(std::string_view text, const ConfigurationVariables& variables);

}  // namespace emstatus::host
