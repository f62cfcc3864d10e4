#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <variant>

#include "markup/Element.h"
#include "markup/MarkupError.h"

namespace emstatus {

/// The most bytes that a document may have.
inline constexpr std::size_t kLargestMarkup = std::size_t{1} << 20;

/// The root element of a document, or what is wrong in it: the first fault of its encoding, else of its
/// markup.
class MarkupResult {
 public:
  MarkupResult(Element root) : outcome_(std::move(root)) {}
  MarkupResult(MarkupError error) : outcome_(std::move(error)) {}

  explicit operator bool() const { return std::holds_alternative<Element>(outcome_); }

  /// Only of a result that is true.
  Element& operator*() { return std::get<Element>(outcome_); }
  const Element& operator*() const { return std::get<Element>(outcome_); }
  Element* operator->() { return &**this; }
  const Element* operator->() const { return &**this; }

  /// Only of a result that is false.
  const MarkupError& Error() const { return std::get<MarkupError>(outcome_); }

 private:
  std::variant<Element, MarkupError> outcome_;
};

/// Reads one whole document: elements, attributes, text, comments, CDATA sections, processing instructions, a
/// declaration and a document type, by the rules of XML 1.0 for a reader that does not read document types.
/// Only the five standard entities and numeric references are known. What goes beyond kLargestMarkup bytes or
/// kDeepestMarkup nested elements is an error, as all that is not well-formed. Throws std::bad_alloc when
/// memory runs out. [any thread]
MarkupResult ReadMarkup(std::string_view bytes);

}  // namespace emstatus
