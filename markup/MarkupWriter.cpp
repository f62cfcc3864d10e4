#include "markup/MarkupWriter.h"

#include <cstddef>
#include <set>
#include <string_view>

#include "markup/Characters.h"
#include "markup/Entities.h"

namespace emstatus {
namespace {

bool IsWritable(std::string_view text) {
  while (!text.empty()) {
    const auto [character, length] = FirstCharacter(text);
    if (length == 0 || !IsMarkupCharacter(character)) return false;
    text.remove_prefix(length);
  }
  return true;
}

bool AppendText(std::string& out, std::string_view text, MarkupPlace place) {
  if (!IsWritable(text)) return false;
  AppendEscaped(out, text, place);
  return true;
}

bool AppendAttributes(std::string& out, const Element& element) {
  std::set<std::string_view> names;
  for (const auto& [name, value] : element.attributes) {
    if (!IsName(name) || !names.insert(name).second) return false;
    out.append(" ").append(name).append("=\"");
    if (!AppendText(out, value, MarkupPlace::AttributeValue)) return false;
    out.append("\"");
  }
  return true;
}

bool AppendElement(std::string& out, const Element& element, std::size_t depth) {
  if (depth > kDeepestMarkup || !IsName(element.name)) return false;
  out.append("<").append(element.name);
  if (!AppendAttributes(out, element)) return false;
  if (element.text.empty() && element.children.empty()) {
    out.append("/>");
    return true;
  }
  out.append(">");
  if (!AppendText(out, element.text, MarkupPlace::Content)) return false;
  for (const Element& child : element.children) {
    if (!AppendElement(out, child, depth + 1) || !AppendText(out, child.tail, MarkupPlace::Content))
      return false;
  }
  out.append("</").append(element.name).append(">");
  return true;
}

}  // namespace

std::string WriteMarkup(const Element& root) {
  std::string out;
  if (!AppendElement(out, root, 1)) return {};
  return out;
}

}  // namespace emstatus
