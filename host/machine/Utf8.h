#pragma once

#include <string>
#include <string_view>

namespace emstatus::host {

/// The text with every byte that is not part of well-formed UTF-8 replaced by U+FFFD. Names come from devices
/// and from configuration files, in whatever they were written. [any thread]
std::string CleanUtf8(std::string_view text);

/// The same on one line, fit for a terminal: each control character is a space. [any thread]
std::string CleanLine(std::string_view text);

/// Columns that the text takes: its code points. `text` is well-formed. [any thread]
std::size_t ColumnsOf(std::string_view text);

}  // namespace emstatus::host
