#include "config/Placeholders.h"

#include <algorithm>
#include <cstdlib>

namespace emstatus {
namespace {

constexpr std::size_t kExpandedLimit = 259;

bool IsNameCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

/// Appends as much of `piece` as the limit of an expanded text allows.
void AppendBounded(std::string& out, std::string_view piece) {
  out.append(piece.substr(0, kExpandedLimit - out.size()));
}

}  // namespace

std::string ExpandEnvironment(const std::string& text) {
  std::string out;
  bool replaced = false;
  for (std::size_t at = 0; at < text.size() && out.size() < kExpandedLimit;) {
    if (text[at] == '%') {
      std::size_t end = at + 1;
      while (end < text.size() && IsNameCharacter(text[end])) ++end;
      if (end < text.size() && text[end] == '%') {
        replaced = true;
        const char* value = std::getenv(text.substr(at + 1, end - at - 1).c_str());
        if (value != nullptr) AppendBounded(out, value);
        at = end + 1;
        continue;
      }
    }
    out += text[at++];
  }
  return replaced ? out : text;
}

std::string ExpandVariables(std::string_view text, const ConfigVariables& variables) {
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      out += text[at];
      continue;
    }
    const std::size_t begin = at + 1;
    std::size_t end = begin;
    while (end < text.size() && IsNameCharacter(text[end])) ++end;
    const std::string_view name = text.substr(begin, end - begin);
    if (end == text.size() || text[end] != '%') {
      out += '%';
      out += name;
      if (end < text.size()) out += text[end];
    } else if (name.empty()) {
      out += '%';
    } else if (const auto variable = variables.find(name); variable != variables.end()) {
      out += variable->second;
    }
    at = end;
  }
  return out;
}

}  // namespace emstatus
