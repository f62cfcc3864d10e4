#include "markup/Entities.h"

#include <algorithm>
#include <array>

namespace emstatus {
namespace {

struct Entity {
  std::string_view name;
  char character;
};

constexpr auto kEntities = std::to_array<Entity>({
    {"lt", '<'},
    {"gt", '>'},
    {"amp", '&'},
    {"apos", '\''},
    {"quot", '"'},
});

std::string_view ReferenceFor(char character, MarkupPlace place) {
  switch (character) {
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return "&amp;";
    case '\r':
      return "&#13;";
    default:
      break;
  }
  if (place == MarkupPlace::Content) return {};
  switch (character) {
    case '"':
      return "&quot;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    default:
      return {};
  }
}

}  // namespace

char EntityCharacter(std::string_view name) {
  const auto found = std::ranges::find(kEntities, name, &Entity::name);
  return found != kEntities.end() ? found->character : '\0';
}

void AppendEscaped(std::string& out, std::string_view text, MarkupPlace place) {
  for (const char character : text) {
    const std::string_view reference = ReferenceFor(character, place);
    if (reference.empty()) {
      out.push_back(character);
    } else {
      out.append(reference);
    }
  }
}

}  // namespace emstatus
