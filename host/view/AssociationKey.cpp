#include "host/view/AssociationKey.h"

#include <charconv>
#include <vector>

#include "host/machine/ReadingAnswer.h"

namespace emstatus::host {
namespace {

constexpr std::string_view kPrefix = "TRIQ:";
constexpr std::size_t kMostParts = 4;

/// The hexadecimal numbers between the dashes; empty when one is no number.
std::vector<std::uint32_t> Parts(std::string_view text) {
  std::vector<std::uint32_t> parts;
  const char* position = text.data();
  const char* const end = text.data() + text.size();
  for (;;) {
    std::uint32_t number = 0;
    const auto [after, error] = std::from_chars(position, end, number, 16);
    if (error != std::errc()) {
      return {};
    }
    parts.push_back(number);
    if (after == end) {
      return parts;
    }
    if (*after != '-') {
      return {};
    }
    position = after + 1;
  }
}

}  // namespace

std::optional<ObjectAddress> ObjectOfKey(std::string_view key, std::uint32_t ownCabinet) {
  if (!key.starts_with(kPrefix)) {
    return std::nullopt;
  }
  const auto parts = Parts(key.substr(kPrefix.size()));
  if (parts.empty() || parts.size() > kMostParts) {
    return std::nullopt;
  }
  const auto part = [&](std::size_t index, std::uint32_t otherwise) {
    return index < parts.size() ? parts[index] : otherwise;
  };
  const ClassRow* row = FindClass(parts[0]);
  const auto question = FindQuestion(part(2, 0));
  if (row == nullptr || !question || IsAboutClass(*question)) {
    return std::nullopt;
  }
  return ObjectAddress{row->objectClass, part(1, 0), part(3, ownCabinet)};
}

}  // namespace emstatus::host
