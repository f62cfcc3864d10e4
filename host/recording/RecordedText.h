#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

/// Texts in whatever they were written, byte for byte in JSON, which is UTF-8. [any thread]
namespace emstatus::host {

/// The text; one that is not well-formed UTF-8 as {"bytes": ...} with a character from U+0000 to U+00FF for
/// each of its bytes.
nlohmann::json RecordedText(std::string_view text);

/// The same for all texts in a value, except names of members.
nlohmann::json RecordedValue(const nlohmann::json& value);

/// The way back. What is no such text stays as it is.
nlohmann::json OriginalValue(const nlohmann::json& recorded);

}  // namespace emstatus::host
