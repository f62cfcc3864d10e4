#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace emstatus {

/// Deepest nesting of elements in a document, the root being 1.
inline constexpr std::size_t kDeepestMarkup = 64;

struct MarkupAttribute {
  std::string name;
  std::string value;

  bool operator==(const MarkupAttribute&) const = default;
};

/// One element of a document with everything in it. All texts are UTF-8, free of references and markup,
/// with lines that end in "\n".
struct Element {
  std::string name;
  /// In the order of the document.
  std::vector<MarkupAttribute> attributes;
  /// The text before the first child, white space included; all text when there is no child.
  std::string text;
  std::vector<Element> children;
  /// The text that follows this element in its parent; a root has none.
  std::string tail;

  bool operator==(const Element&) const = default;

  /// The attribute's value; nullptr when there is none.
  const std::string* FindAttribute(std::string_view attributeName) const;
  /// The attribute's value; "" when there is none.
  const std::string& Attribute(std::string_view attributeName) const;
  /// The first child of that name; nullptr when there is none.
  const Element* Child(std::string_view childName) const;
};

}  // namespace emstatus
