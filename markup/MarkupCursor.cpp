#include "markup/MarkupCursor.h"

#include <algorithm>
#include <string>

#include "markup/Characters.h"

namespace emstatus {
namespace {

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  quoted.append(text).append("\"");
  return quoted;
}

bool IsCharacterStart(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

/// The beginning of `text`, to show people where something went wrong.
std::string Shown(std::string_view text) {
  constexpr std::size_t kMost = 20;
  if (text.empty()) return "the end of the document";
  if (text[0] == '\n') return "the end of the line";
  text = text.substr(0, text.find('\n'));
  std::size_t length = std::min(text.size(), kMost);
  while (length < text.size() && !IsCharacterStart(text[length])) --length;
  return Quoted(text.substr(0, length));
}

}  // namespace

bool MarkupCursor::Accept(std::string_view literal) {
  if (!LooksAt(literal)) return false;
  offset_ += literal.size();
  return true;
}

bool MarkupCursor::SkipSpace() {
  const std::size_t before = offset_;
  offset_ = std::min(text_.find_first_not_of(" \t\n\r", offset_), text_.size());
  return offset_ != before;
}

std::string_view MarkupCursor::TakeUntilAny(std::string_view characters) {
  const std::string_view taken = Rest().substr(0, Rest().find_first_of(characters));
  offset_ += taken.size();
  return taken;
}

bool MarkupCursor::AcceptQuote(char& quote) {
  if (!LooksAt("\"") && !LooksAt("'")) return false;
  quote = text_[offset_++];
  return true;
}

bool MarkupCursor::Expect(std::string_view literal) {
  return Accept(literal) || Fail(Quoted(literal));
}

bool MarkupCursor::ExpectSpace() {
  return SkipSpace() || Fail("white space");
}

bool MarkupCursor::ReadName(std::string_view& name) {
  const std::size_t start = offset_;
  for (;;) {
    const auto [character, length] = FirstCharacter(Rest());
    if (length == 0 || !(offset_ == start ? IsNameStart(character) : IsNameCharacter(character))) break;
    offset_ += length;
  }
  name = text_.substr(start, offset_ - start);
  return !name.empty() || Fail("a name");
}

bool MarkupCursor::ReadThrough(std::string_view literal, std::string_view& before) {
  const std::size_t found = text_.find(literal, offset_);
  if (found == std::string_view::npos) return FailAt(text_.size(), Quoted(literal));
  before = text_.substr(offset_, found - offset_);
  offset_ = found + literal.size();
  return true;
}

bool MarkupCursor::ReadQuoted(std::string_view& text) {
  char quote = '\0';
  if (!AcceptQuote(quote)) return Fail("a text in quotes");
  return ReadThrough(std::string_view(&quote, 1), text);
}

bool MarkupCursor::FailAt(std::size_t offset, std::string_view expected) {
  if (error_.line != 0) return false;
  const std::string_view before = text_.substr(0, offset);
  const std::size_t lineStart = before.rfind('\n') + 1;
  error_.line = static_cast<std::uint32_t>(1 + std::ranges::count(before, '\n'));
  error_.column =
      static_cast<std::uint32_t>(1 + std::ranges::count_if(before.substr(lineStart), IsCharacterStart));
  error_.message = "expected ";
  error_.message.append(expected).append(", found ").append(Shown(text_.substr(offset)));
  return false;
}

}  // namespace emstatus
