#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Characters of markup and their UTF-8 form. [any thread]
namespace emstatus {

/// Whether the character may stand in a document at all.
bool IsMarkupCharacter(char32_t character);
bool IsNameStart(char32_t character);
bool IsNameCharacter(char32_t character);

/// Space, tab, line feed, carriage return.
constexpr bool IsMarkupSpace(char32_t character) {
  return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

/// Whether the whole of `text`, in valid UTF-8, is a name.
bool IsName(std::string_view text);

void AppendUtf8(std::string& text, char32_t character);

/// One character and the number of bytes that it takes.
struct Utf8Character {
  char32_t character;
  /// 0: no valid character starts here.
  std::size_t length;
};

/// The first character of `text`; {0, 0} when it is empty or does not begin with valid UTF-8 (overlong forms
/// and surrogates are not valid).
Utf8Character FirstCharacter(std::string_view text);

}  // namespace emstatus
