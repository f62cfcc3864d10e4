#include "host/view/AssociationKey.h"

#include <charconv>
#include <vector>

#include "host/machine/ReadingAnswer.h"

namespace emstatus::host {
namespace {

constexpr std::string_view kPrefix = "TRIQ:";
constexpr std::size_t kMostParts = 4;

/// The hexadecimal numbers between the dashes; empty for another key, when one is no number, or there are too
/// many.
std::vector<std::uint32_t> Parts(std::string_view text) {
  std::vector<std::uint32_t> parts;
  if (!text.starts_with(kPrefix)) {
    return parts;
  }
  text.remove_prefix(kPrefix.size());
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
      return parts.size() <= kMostParts ? parts : std::vector<std::uint32_t>{};
    }
    if (*after != '-') {
      return {};
    }
    position = after + 1;
  }
}

}  // namespace

std::optional<Question> QuestionOfKey(std::string_view key) {
  const auto parts = Parts(key);
  return parts.size() > 2 ? FindQuestion(parts[2]) : std::nullopt;
}

std::optional<ObjectAddress> ObjectOfKey(std::string_view key, std::uint32_t ownCabinet) {
  const auto parts = Parts(key);
  if (parts.empty()) {
    return std::nullopt;
  }
  const auto part = [&](std::size_t index, std::uint32_t otherwise) {
    return index < parts.size() ? parts[index] : otherwise;
  };
  const ClassRow* row = FindClass(parts[0]);
  const auto question = QuestionOfKey(key);
  if (row == nullptr || !question || IsAboutClass(*question)) {
    return std::nullopt;
  }
  return ObjectAddress{row->objectClass, part(1, 0), part(3, ownCabinet)};
}

}  // namespace emstatus::host
