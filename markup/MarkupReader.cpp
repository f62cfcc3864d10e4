#include "markup/MarkupReader.h"

#include <charconv>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "markup/Characters.h"
#include "markup/Encoding.h"
#include "markup/Entities.h"
#include "markup/MarkupCursor.h"
#include "markup/MarkupPrologue.h"

namespace emstatus {
namespace {

/// The character of the digits of a numeric reference; 0 when it may not stand in a document.
char32_t CharacterNumbered(std::string_view digits, int base) {
  std::uint32_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
  if (digits.empty() || stop != end || error != std::errc{} || !IsMarkupCharacter(number)) return 0;
  return number;
}

/// Reads the root element, keeping the elements that are not closed yet on a stack of its own.
class ElementReader {
 public:
  explicit ElementReader(MarkupCursor& cursor) : cursor_(cursor) {}

  /// False with the cursor's error set.
  bool Read(Element& root) {
    if (!cursor_.LooksAt("<")) return cursor_.Fail("the root element");
    if (!ReadStartTag()) return false;
    while (!open_.empty()) {
      if (!ReadContent()) return false;
    }
    root = std::move(root_);
    return true;
  }

 private:
  bool ReadContent() {
    if (cursor_.LooksAt("</")) return ReadEndTag();
    if (cursor_.LooksAt("<!--")) return SkipComment(cursor_);
    if (cursor_.LooksAt("<?")) return SkipInstruction(cursor_);
    if (cursor_.Accept("<![CDATA[")) {
      std::string_view text;
      if (!cursor_.ReadThrough("]]>", text)) return false;
      CurrentText().append(text);
      return true;
    }
    if (cursor_.LooksAt("<")) return ReadStartTag();
    if (cursor_.LooksAt("&")) return ReadReference(CurrentText());
    if (cursor_.AtEnd()) return cursor_.Fail("\"</" + open_.back().name + ">\"");
    return ReadText();
  }

  bool ReadText() {
    const std::size_t start = cursor_.Offset();
    const std::string_view text = cursor_.TakeUntilAny("<&");
    const std::size_t sectionEnd = text.find("]]>");
    if (sectionEnd != std::string_view::npos) {
      return cursor_.FailAt(start + sectionEnd, "text without the end of a CDATA section");
    }
    CurrentText().append(text);
    return true;
  }

  bool ReadStartTag() {
    if (open_.size() == kDeepestMarkup) return cursor_.Fail("fewer elements within each other");
    std::string_view name;
    if (!cursor_.Expect("<") || !cursor_.ReadName(name)) return false;
    open_.emplace_back().name = name;
    std::set<std::string_view> attributeNames;
    for (;;) {
      const bool space = cursor_.SkipSpace();
      if (cursor_.Accept(">")) return true;
      if (cursor_.Accept("/>")) return Close();
      if (!space) return cursor_.Fail("white space, \">\" or \"/>\"");
      if (!ReadAttribute(attributeNames)) return false;
    }
  }

  bool ReadAttribute(std::set<std::string_view>& names) {
    const std::size_t start = cursor_.Offset();
    std::string_view name;
    if (!cursor_.ReadName(name)) return false;
    if (!names.insert(name).second) return cursor_.FailAt(start, "an attribute of another name");
    cursor_.SkipSpace();
    if (!cursor_.Expect("=")) return false;
    cursor_.SkipSpace();
    MarkupAttribute& attribute = open_.back().attributes.emplace_back();
    attribute.name = name;
    return ReadAttributeValue(attribute.value);
  }

  bool ReadAttributeValue(std::string& value) {
    char quote = '\0';
    if (!cursor_.AcceptQuote(quote)) return cursor_.Fail("a value in quotes");
    const std::string_view closing(&quote, 1);
    const std::string stops = std::string(closing) + "<&\t\n";
    for (;;) {
      value.append(cursor_.TakeUntilAny(stops));
      if (cursor_.Accept(closing)) return true;
      if (cursor_.Accept("\t") || cursor_.Accept("\n")) {
        value.push_back(' ');
      } else if (!cursor_.LooksAt("&")) {
        return cursor_.Fail(std::string(closing) + " at the end of the value");
      } else if (!ReadReference(value)) {
        return false;
      }
    }
  }

  bool ReadReference(std::string& text) {
    const std::size_t start = cursor_.Offset();
    cursor_.Accept("&");
    if (cursor_.Accept("#")) {
      const int base = cursor_.Accept("x") ? 16 : 10;
      const char32_t character = CharacterNumbered(cursor_.TakeUntilAny(";<&\"'"), base);
      if (character == 0) return cursor_.FailAt(start, "the number of a character");
      AppendUtf8(text, character);
      return cursor_.Expect(";");
    }
    std::string_view name;
    if (!cursor_.ReadName(name)) return false;
    const char character = EntityCharacter(name);
    if (character == '\0') return cursor_.FailAt(start, "a standard entity");
    text.push_back(character);
    return cursor_.Expect(";");
  }

  bool ReadEndTag() {
    const std::string& expected = open_.back().name;
    const std::size_t start = cursor_.Offset();
    std::string_view name;
    if (!cursor_.Expect("</") || !cursor_.ReadName(name)) return false;
    if (name != expected) return cursor_.FailAt(start, "\"</" + expected + ">\"");
    cursor_.SkipSpace();
    return cursor_.Expect(">") && Close();
  }

  bool Close() {
    Element closed = std::move(open_.back());
    open_.pop_back();
    if (open_.empty()) {
      root_ = std::move(closed);
    } else {
      open_.back().children.push_back(std::move(closed));
    }
    return true;
  }

  std::string& CurrentText() {
    Element& element = open_.back();
    return element.children.empty() ? element.text : element.children.back().tail;
  }

  MarkupCursor& cursor_;
  std::vector<Element> open_;
  Element root_;
};

}  // namespace

MarkupResult ReadMarkup(std::string_view bytes) {
  if (bytes.size() > kLargestMarkup) {
    return MarkupError{1, 1, "expected at most 1048576 bytes, found " + std::to_string(bytes.size())};
  }
  const DecodedMarkup decoded = DecodeMarkup(bytes);
  if (const auto* error = std::get_if<MarkupError>(&decoded)) return *error;
  MarkupCursor cursor(std::get<std::string>(decoded));
  Element root;
  const bool good = SkipDeclaration(cursor) && SkipPrologue(cursor) && ElementReader(cursor).Read(root) &&
                    SkipMiscellany(cursor) && (cursor.AtEnd() || cursor.Fail("the end of the document"));
  if (!good) return cursor.Error();
  return root;
}

}  // namespace emstatus
