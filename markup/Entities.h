#pragma once

#include <string>
#include <string_view>

namespace emstatus {

/// The character of a standard entity ("lt", "gt", "amp", "apos", "quot"); 0 for any other name. [any thread]
char EntityCharacter(std::string_view name);

/// Where a text is going to stand.
enum class MarkupPlace { Content, AttributeValue };

/// Appends `text` to `out` with references for what would not come back as it is: markup characters, carriage
/// returns, and in attribute values (to stand in double quotes) quotes and line ends too. [any thread]
void AppendEscaped(std::string& out, std::string_view text, MarkupPlace place);

}  // namespace emstatus
