#pragma once

#include <optional>
#include <string>

#include "markup/Element.h"

namespace emstatus::test {

/// The root element as libexpat reads the document; nothing when expat refuses it, or when it holds what
/// ReadMarkup refuses on purpose: an internal subset, more than kDeepestMarkup nested elements, a version
/// that is not 1.x.
///
/// Differences that stay: expat lets an entity pass that an external document type might declare; it does not
/// look for the second half of a surrogate pair in UTF-16; it knows the name characters of an older edition
/// of XML 1.0.
std::optional<Element> ReadWithExpat(const std::string& bytes);

}  // namespace emstatus::test
