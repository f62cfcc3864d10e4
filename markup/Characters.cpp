#include "markup/Characters.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace emstatus {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

constexpr auto kNameStarts = std::to_array<Range>({
    {':', ':'},
    {'A', 'Z'},
    {'_', '_'},
    {'a', 'z'},
    {0xC0, 0xD6},
    {0xD8, 0xF6},
    {0xF8, 0x2FF},
    {0x370, 0x37D},
    {0x37F, 0x1FFF},
    {0x200C, 0x200D},
    {0x2070, 0x218F},
    {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF},
    {0xF900, 0xFDCF},
    {0xFDF0, 0xFFFD},
    {0x10000, 0xEFFFF},
});

constexpr auto kMoreNameCharacters = std::to_array<Range>({
    {'-', '.'},
    {'0', '9'},
    {0xB7, 0xB7},
    {0x300, 0x36F},
    {0x203F, 0x2040},
});

bool IsIn(const auto& ranges, char32_t character) {
  return std::ranges::any_of(
      ranges, [character](Range range) { return character >= range.first && character <= range.last; });
}

/// How a character begins: its length in bytes, the bits in its first byte, the smallest character of that
/// length.
struct Lead {
  std::size_t length;
  unsigned char bits;
  char32_t least;
};

Lead LeadOf(unsigned char byte) {
  if (byte < 0x80) return {1, 0x7F, 0};
  if ((byte & 0xE0) == 0xC0) return {2, 0x1F, 0x80};
  if ((byte & 0xF0) == 0xE0) return {3, 0x0F, 0x800};
  if ((byte & 0xF8) == 0xF0) return {4, 0x07, 0x10000};
  return {0, 0, 0};
}

bool IsSurrogate(char32_t character) {
  return character >= 0xD800 && character <= 0xDFFF;
}

}  // namespace

bool IsMarkupCharacter(char32_t character) {
  if (character < 0x20) return IsMarkupSpace(character);
  return character <= 0x10FFFF && !IsSurrogate(character) && character != 0xFFFE && character != 0xFFFF;
}

bool IsNameStart(char32_t character) {
  return IsIn(kNameStarts, character);
}

bool IsNameCharacter(char32_t character) {
  return IsNameStart(character) || IsIn(kMoreNameCharacters, character);
}

bool IsName(std::string_view text) {
  bool first = true;
  while (!text.empty()) {
    const auto [character, length] = FirstCharacter(text);
    if (length == 0 || !(first ? IsNameStart(character) : IsNameCharacter(character))) return false;
    text.remove_prefix(length);
    first = false;
  }
  return !first;
}

void AppendUtf8(std::string& text, char32_t character) {
  const auto put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  const auto putRest = [&](int shift) {
    for (; shift >= 0; shift -= 6) put(0x80 | ((character >> shift) & 0x3F));
  };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | (character >> 6));
    putRest(0);
  } else if (character < 0x10000) {
    put(0xE0 | (character >> 12));
    putRest(6);
  } else {
    put(0xF0 | (character >> 18));
    putRest(12);
  }
}

Utf8Character FirstCharacter(std::string_view text) {
  if (text.empty()) return {0, 0};
  const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const Lead lead = LeadOf(byteAt(0));
  if (lead.length == 0 || lead.length > text.size()) return {0, 0};
  char32_t character = byteAt(0) & lead.bits;
  for (std::size_t i = 1; i < lead.length; ++i) {
    if ((byteAt(i) & 0xC0) != 0x80) return {0, 0};
    character = (character << 6) | (byteAt(i) & 0x3F);
  }
  if (character < lead.least || character > 0x10FFFF || IsSurrogate(character)) return {0, 0};
  return {character, lead.length};
}

}  // namespace emstatus
