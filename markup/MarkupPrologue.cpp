#include "markup/MarkupPrologue.h"

#include <algorithm>
#include <string_view>

#include "markup/Characters.h"

namespace emstatus {
namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr std::string_view kEncodingCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
constexpr std::string_view kPublicCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 \n-'()+,./:=?;!*#@$_%";

bool ConsistsOf(std::string_view text, std::string_view allowed) {
  return text.find_first_not_of(allowed) == std::string_view::npos;
}

bool IsVersion(std::string_view text) {
  return text.size() > 2 && text.starts_with("1.") && ConsistsOf(text.substr(2), kDigits);
}

bool IsEncodingName(std::string_view text) {
  return !text.empty() && ConsistsOf(text.substr(0, 1), kLetters) && ConsistsOf(text, kEncodingCharacters);
}

bool IsYesOrNo(std::string_view text) {
  return text == "yes" || text == "no";
}

bool IsReservedTarget(std::string_view name) {
  constexpr std::string_view kReserved = "xml";
  return std::ranges::equal(name, kReserved, [](char c, char lower) { return (c | 0x20) == lower; });
}

/// ' = "value"' behind the name of a part of the declaration.
bool SkipPart(MarkupCursor& cursor, bool (*isValid)(std::string_view), std::string_view expected) {
  cursor.SkipSpace();
  if (!cursor.Expect("=")) return false;
  cursor.SkipSpace();
  const std::size_t start = cursor.Offset();
  std::string_view value;
  if (!cursor.ReadQuoted(value)) return false;
  return isValid(value) || cursor.FailAt(start, expected);
}

bool SkipExternalIdentifier(MarkupCursor& cursor) {
  std::string_view literal;
  if (cursor.Accept("PUBLIC")) {
    if (!cursor.ExpectSpace()) return false;
    const std::size_t start = cursor.Offset();
    if (!cursor.ReadQuoted(literal)) return false;
    if (!ConsistsOf(literal, kPublicCharacters)) return cursor.FailAt(start, "a public identifier");
  } else if (!cursor.Accept("SYSTEM")) {
    return cursor.Fail("\"PUBLIC\", \"SYSTEM\" or \">\"");
  }
  return cursor.ExpectSpace() && cursor.ReadQuoted(literal);
}

bool SkipDocumentType(MarkupCursor& cursor) {
  std::string_view name;
  if (!cursor.Expect("<!DOCTYPE") || !cursor.ExpectSpace() || !cursor.ReadName(name)) return false;
  if (cursor.SkipSpace() && !cursor.LooksAt(">") && !cursor.LooksAt("[")) {
    if (!SkipExternalIdentifier(cursor)) return false;
    cursor.SkipSpace();
  }
  if (cursor.LooksAt("[")) return cursor.Fail("\">\" (a document type without declarations of its own)");
  return cursor.Expect(">");
}

}  // namespace

bool SkipDeclaration(MarkupCursor& cursor) {
  if (!cursor.LooksAt("<?xml ") && !cursor.LooksAt("<?xml\t") && !cursor.LooksAt("<?xml\n")) return true;
  cursor.Accept("<?xml");
  cursor.SkipSpace();
  if (!cursor.Expect("version") || !SkipPart(cursor, IsVersion, "a version such as \"1.0\"")) return false;
  bool space = cursor.SkipSpace();
  if (space && cursor.Accept("encoding")) {
    if (!SkipPart(cursor, IsEncodingName, "the name of an encoding")) return false;
    space = cursor.SkipSpace();
  }
  if (space && cursor.Accept("standalone")) {
    if (!SkipPart(cursor, IsYesOrNo, "\"yes\" or \"no\"")) return false;
    cursor.SkipSpace();
  }
  return cursor.Expect("?>");
}

bool SkipComment(MarkupCursor& cursor) {
  std::string_view text;
  return cursor.Expect("<!--") && cursor.ReadThrough("--", text) && cursor.Expect(">");
}

bool SkipInstruction(MarkupCursor& cursor) {
  std::string_view text;
  if (!cursor.Expect("<?")) return false;
  const std::size_t start = cursor.Offset();
  if (!cursor.ReadName(text)) return false;
  if (IsReservedTarget(text)) return cursor.FailAt(start, "a target other than \"xml\"");
  if (cursor.Accept("?>")) return true;
  return cursor.ExpectSpace() && cursor.ReadThrough("?>", text);
}

bool SkipMiscellany(MarkupCursor& cursor) {
  for (;;) {
    cursor.SkipSpace();
    if (cursor.LooksAt("<!--")) {
      if (!SkipComment(cursor)) return false;
    } else if (cursor.LooksAt("<?")) {
      if (!SkipInstruction(cursor)) return false;
    } else {
      return true;
    }
  }
}

bool SkipPrologue(MarkupCursor& cursor) {
  if (!SkipMiscellany(cursor)) return false;
  if (!cursor.LooksAt("<!DOCTYPE")) return true;
  return SkipDocumentType(cursor) && SkipMiscellany(cursor);
}

}  // namespace emstatus
