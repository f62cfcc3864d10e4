#include "markup/Element.h"

#include <algorithm>

namespace emstatus {

const std::string* Element::FindAttribute(std::string_view attributeName) const {
  const auto found = std::ranges::find(attributes, attributeName, &MarkupAttribute::name);
  return found != attributes.end() ? &found->value : nullptr;
}

const std::string& Element::Attribute(std::string_view attributeName) const {
  static const std::string kNone;
  const std::string* value = FindAttribute(attributeName);
  return value != nullptr ? *value : kNone;
}

const Element* Element::Child(std::string_view childName) const {
  const auto found = std::ranges::find(children, childName, &Element::name);
  return found != children.end() ? &*found : nullptr;
}

}  // namespace emstatus
