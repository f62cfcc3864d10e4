#include "host/providers/UnitName.h"

#include <algorithm>
#include <array>

namespace emstatus::host {
namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::array<std::string_view, 11> kTypes = {".service", ".socket",    ".target", ".device",
                                                     ".mount",   ".automount", ".swap",   ".timer",
                                                     ".path",    ".slice",     ".scope"};

bool HasType(std::string_view name) {
  return std::ranges::any_of(
      kTypes, [&](std::string_view type) { return name.size() > type.size() && name.ends_with(type); });
}

bool IsAllowed(char character) {
  constexpr std::string_view kOthers = ":-_.\\@";
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || kOthers.find(character) != std::string_view::npos;
}

}  // namespace

std::string WithUnitType(const std::string& name) {
  return HasType(name) ? name : name + ".service";
}

bool IsUnitName(std::string_view name) {
  return name.size() <= kLongestName && HasType(name) && name.front() != '@' &&
         std::ranges::all_of(name, IsAllowed);
}

std::optional<std::string> TemplateOf(std::string_view name) {
  const std::size_t at = name.find('@');
  const std::size_t dot = name.rfind('.');
  if (at == std::string_view::npos || dot == std::string_view::npos || dot < at) {
    return std::nullopt;
  }
  return std::string(name.substr(0, at + 1)) + std::string(name.substr(dot));
}

}  // namespace emstatus::host
