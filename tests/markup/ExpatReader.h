#pragma once

#include <optional>
#include <string>

#include "markup/Element.h"

namespace emstatus::test {

/// The root element as libexpat reads the document; nothing when expat refuses it, or when it holds what
/// ReadMarkup refuses on purpose: an internal subset, more than kDeepestMarkup nested elements, a version
/// that is not 1.x.
///
/// Differences that stay, all of them where expat is laxer or older than XML 1.0 in its fifth edition: it
/// lets an entity pass that an external document type might declare; it does not look for the second half of
/// a surrogate pair in UTF-16; its name characters are those of an older edition, with U+00AA, U+00B5 and
/// U+00BA; it takes a UTF-8 byte-order mark before the declaration of another encoding; it knows no second
/// names of encodings.
std::optional<Element> ReadWithExpat(const std::string& bytes);

}  // namespace emstatus::test
