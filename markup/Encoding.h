#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "markup/MarkupError.h"

namespace emstatus {

/// A document's text in UTF-8, or what is wrong with its encoding.
using DecodedMarkup = std::variant<std::string, MarkupError>;

/// Turns the bytes of a document into UTF-8 with lines that end in "\n", without the byte-order mark. The
/// encoding is that of the byte-order mark, else UTF-16 when one of the first two bytes is 0, else the
/// declared one, else UTF-8. Known: UTF-8, UTF-16LE, UTF-16BE, ISO-8859-1, windows-1252, US-ASCII. An error:
/// an unknown encoding, a declaration that contradicts the bytes, bytes that the encoding does not have,
/// characters that no document may hold. [any thread]
DecodedMarkup DecodeMarkup(std::string_view bytes);

}  // namespace emstatus
