#pragma once

#include <string>

#include "markup/Element.h"

namespace emstatus {

/// The element and everything in it as a document in UTF-8, which ReadMarkup turns into an equal element. The
/// root's tail is not written. Empty when no document can hold the element: a name that is none, an attribute
/// given twice, text that is not UTF-8 or has characters no document may hold, or more than kDeepestMarkup
/// nested elements. [any thread]
std::string WriteMarkup(const Element& root);

}  // namespace emstatus
