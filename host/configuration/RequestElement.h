#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace emstatus::host {

/// The data that a request carries: its first DATA element.
struct RequestData {
  /// "int" or "string" where the module can use it.
  std::string type;
  std::string text;
};

/// The element of a request string.
struct RequestElement {
  std::string name;
  std::map<std::string, std::string, std::less<>> attributes;
  std::optional<RequestData> data;

  /// Null when there is none.
  const std::string* Attribute(std::string_view attribute) const;

  /// An attribute as the hexadecimal number that it begins with, 0 for any other text; nothing when there is
  /// none.
  std::optional<std::uint32_t> HexNumber(std::string_view attribute) const;
};

/// Reads the markup of a request string. Nothing, with what is wrong in `problem`, when it is no well-formed
/// element. [any thread]
std::optional<RequestElement> ReadRequestElement(std::string_view text, std::string& problem);

}  // namespace emstatus::host
