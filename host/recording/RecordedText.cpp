#include "host/recording/RecordedText.h"

#include <optional>

#include "host/machine/Utf8.h"

namespace emstatus::host {
namespace {

constexpr const char* kBytes = "bytes";
constexpr unsigned char kFirstOfTwo = 0x80;

std::string Widened(std::string_view bytes) {
  std::string wide;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    if (value < kFirstOfTwo) {
      wide += byte;
    } else {
      wide += static_cast<char>(0xC0U | value >> 6U);
      wide += static_cast<char>(0x80U | (value & 0x3FU));
    }
  }
  return wide;
}

/// Nothing when it holds other characters than Widened() makes. `wide` is well-formed.
std::optional<std::string> Narrowed(std::string_view wide) {
  std::string bytes;
  for (std::size_t at = 0; at < wide.size(); ++at) {
    const auto value = static_cast<unsigned char>(wide[at]);
    if (value < kFirstOfTwo) {
      bytes += wide[at];
    } else if (value <= 0xC3 && at + 1 < wide.size()) {
      bytes += static_cast<char>((value & 0x03U) << 6U | (static_cast<unsigned char>(wide[++at]) & 0x3FU));
    } else {
      return std::nullopt;
    }
  }
  return bytes;
}

bool IsWidened(const nlohmann::json& value) {
  return value.is_object() && value.size() == 1 && value.begin().key() == kBytes &&
         value.begin()->is_string();
}

}  // namespace

nlohmann::json RecordedText(std::string_view text) {
  if (CleanUtf8(text) == text) {
    return text;
  }
  return {{kBytes, Widened(text)}};
}

nlohmann::json RecordedValue(const nlohmann::json& value) {
  if (value.is_string()) {
    return RecordedText(value.get_ref<const std::string&>());
  }
  nlohmann::json recorded = value;
  if (recorded.is_structured()) {
    for (nlohmann::json& element : recorded) {
      element = RecordedValue(element);
    }
  }
  return recorded;
}

nlohmann::json OriginalValue(const nlohmann::json& recorded) {
  if (IsWidened(recorded)) {
    const auto bytes = Narrowed(recorded.begin()->get_ref<const std::string&>());
    return bytes ? nlohmann::json(*bytes) : recorded;
  }
  nlohmann::json value = recorded;
  if (value.is_structured()) {
    for (nlohmann::json& element : value) {
      element = OriginalValue(element);
    }
  }
  return value;
}

}  // namespace emstatus::host
