#include "tests/markup/DocumentMaker.h"

#include "markup/Characters.h"

namespace emstatus::test {
namespace {

/// Takes the first character; what is not UTF-8 counts as a character for each byte.
char32_t TakeCharacter(std::string_view& text) {
  auto [character, length] = FirstCharacter(text);
  if (length == 0) {
    character = static_cast<unsigned char>(text[0]);
    length = 1;
  }
  text.remove_prefix(length);
  return character;
}

std::string Utf16(std::string_view text, bool lowFirst) {
  std::string bytes;
  const auto put = [&](char32_t unit) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes.push_back(lowFirst ? low : high);
    bytes.push_back(lowFirst ? high : low);
  };
  while (!text.empty()) {
    const char32_t character = TakeCharacter(text);
    if (character < 0x10000) {
      put(character);
    } else {
      put(0xD800 + ((character - 0x10000) >> 10));
      put(0xDC00 + ((character - 0x10000) & 0x3FF));
    }
  }
  return bytes;
}

/// Characters that the encoding may not have become "x".
std::string OneByte(std::string_view text, bool isWindows) {
  std::string bytes;
  while (!text.empty()) {
    const char32_t character = TakeCharacter(text);
    const bool isEuro = character == 0x20AC && isWindows;
    bytes.push_back(isEuro ? '\x80' : character < 0x100 ? static_cast<char>(character) : 'x');
  }
  return bytes;
}

}  // namespace

std::string DocumentMaker::Name() {
  std::string name(OneOf("a", "b", "CMD", "DATA", "_x", "ns:e", "\u00E9", "xml-like"));
  if (Once(2)) name += OneOf("1", "-", ".b", "\u00B7", "z");
  return name;
}

std::string DocumentMaker::Space(std::string_view least) {
  std::string space(least);
  while (Once(4)) space += OneOf(" ", "\t", "\n", "\r\n", "\r");
  return space;
}

std::string DocumentMaker::Characters(std::string_view forbidden) {
  std::string text;
  for (std::size_t i = Below(5); i > 0; --i) {
    const std::string_view piece =
        OneOf("text", " ", "\t", "\n", "\r\n", "\r", "&lt;", "&gt;", "&amp;", "&apos;", "&quot;", "&#10;",
              "&#13;", "&#x20AC;", "&#9;", "&#x1F600;", "\u00E9", "\u20AC", "\U0001F600", "'", "\"", "]]",
              ">", "=", "%A%", "0x1F", "\u007F", "\uFFFD");
    if (piece.find_first_of(forbidden) == std::string_view::npos) text += piece;
    if (text.ends_with("]") || text.ends_with("]]")) text += " ";
  }
  return text;
}

std::string DocumentMaker::Attributes() {
  std::string text;
  for (std::size_t i = Below(4); i > 0; --i) {
    const std::string_view quote = OneOf("'", "\"");
    text += Space(OneOf(" ", "\n", "\t")) + "k" + std::to_string(i) + Name() + Space("") + "=" + Space("");
    text.append(quote).append(Characters(quote)).append(quote);
  }
  return text;
}

std::string DocumentMaker::Aside() {
  switch (Below(4)) {
    case 0:
      return "<!-- <b> & - > -->";
    case 1:
      return "<!---->";
    case 2:
      return "<?pi?>";
    default:
      return "<?target  <a> ? > & ?>";
  }
}

std::string DocumentMaker::Content(int depth) {
  std::string text;
  for (std::size_t i = Below(5); i > 0; --i) {
    switch (Below(6)) {
      case 0:
        text += Aside();
        break;
      case 1:
        text += "<![CDATA[" + std::string(OneOf("", "<a>&lt;", "]]", "]", "\r\n ]] >", "\u00E9")) + "]]>";
        break;
      case 2:
      case 3:
        text += Characters("");
        break;
      default:
        if (depth > 0) text += ElementText(depth - 1);
    }
  }
  return text;
}

std::string DocumentMaker::ElementText(int depth) {
  const std::string name = Name();
  const std::string start = "<" + name + Attributes() + Space("");
  if (Once(4)) return start + "/>";
  return start + ">" + Content(depth) + "</" + name + Space("") + ">";
}

std::string DocumentMaker::Prologue(std::string_view encoding) {
  std::string text;
  if (encoding != "UTF-8" || Once(2)) {
    text =
        "<?xml" + Space(" ") + "version" + Space("") + "=" + std::string(OneOf("\"1.0\"", "'1.0'", "'1.1'"));
    if (encoding != "UTF-8" || Once(2)) text += Space(" ") + "encoding='" + std::string(encoding) + "'";
    if (Once(3)) text += Space(" ") + "standalone=" + std::string(OneOf("'yes'", "\"no\""));
    text += Space("") + "?>";
  }
  while (Once(3)) text += Space("") + Aside();
  if (Once(5)) {
    text += Space("") + "<!DOCTYPE" + Space(" ") + Name();
    text += Space("") + ">";
  }
  return text + Space("");
}

void DocumentMaker::Spoil(std::string& text) {
  for (std::size_t i = 1 + Below(3); i > 0; --i) {
    const std::size_t place = Below(text.size());
    switch (Below(4)) {
      case 0:
        text.erase(place, 1 + Below(3));
        text += " ";
        break;
      case 1:
        text.insert(place, text.substr(Below(text.size()), 1 + Below(12)));
        break;
      case 2:
        text.insert(place,
                    OneOf("<", ">", "&", ";", "/", "\"", "'", "=", "]]>", "--", "?>", "<!", "<a>", "</a>",
                          "&#", "&#0;", "&#xD800;", "&#xFFFE;", "&x;", "&#X41;", "&#1114112;", " ", "\x01",
                          "\xC0\x80", "\xED\xA0\x80", "\xFF", "\uFFFE", "\x85", "\x81", "<![CDATA[",
                          "<!DOCTYPE a>", "<!DOCTYPE a []>", "<?xml version='1.0'?>", "<?XML?>", ":"));
        break;
      default:
        text[place] = static_cast<char>(Below(256));
    }
  }
}

std::string DocumentMaker::Make(bool isSpoiled) {
  const std::string_view encoding =
      OneOf("UTF-8", "UTF-8", "utf-8", "UTF-16", "UTF-16LE", "UTF-16BE", "ISO-8859-1", "windows-1252");
  std::string text = Prologue(encoding) + ElementText(4);
  while (Once(4)) text += Space("") + Aside();
  text += Space("");
  if (isSpoiled) Spoil(text);
  if (encoding.starts_with("UTF-16")) {
    if (Once(2)) text = "\uFEFF" + text;
    return Utf16(text, encoding == "UTF-16LE" || (encoding == "UTF-16" && Once(2)));
  }
  if (encoding == "UTF-8") return std::string(OneOf("", "", "\xEF\xBB\xBF")) + text;
  return encoding == "utf-8" ? text : OneByte(text, encoding == "windows-1252");
}

}  // namespace emstatus::test
