#include "markup/Encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "markup/Characters.h"

namespace emstatus {
namespace {

enum class Encoding { Utf8, Utf16, Utf16Le, Utf16Be, Latin1, Windows1252, Ascii };

struct EncodingName {
  std::string_view name;
  Encoding encoding;
};

/// In upper case.
constexpr auto kEncodingNames = std::to_array<EncodingName>({
    {"UTF-8", Encoding::Utf8},
    {"UTF-16", Encoding::Utf16},
    {"UTF-16LE", Encoding::Utf16Le},
    {"UTF-16BE", Encoding::Utf16Be},
    {"ISO-8859-1", Encoding::Latin1},
    {"ISO_8859-1", Encoding::Latin1},
    {"LATIN1", Encoding::Latin1},
    {"WINDOWS-1252", Encoding::Windows1252},
    {"CP1252", Encoding::Windows1252},
    {"US-ASCII", Encoding::Ascii},
    {"ASCII", Encoding::Ascii},
});

/// Bytes 0x80 to 0x9F of windows-1252; 0 for those it does not have.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

/// What the first bytes tell.
struct Beginning {
  /// Nothing: an encoding that goes on where ASCII ends.
  std::optional<Encoding> encoding;
  std::size_t markLength = 0;
};

Beginning Inspect(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return {Encoding::Utf8, 3};
  if (bytes.starts_with("\xFF\xFE")) return {Encoding::Utf16Le, 2};
  if (bytes.starts_with("\xFE\xFF")) return {Encoding::Utf16Be, 2};
  if (bytes.size() >= 2 && bytes[0] == '\0') return {Encoding::Utf16Be, 0};
  if (bytes.size() >= 2 && bytes[1] == '\0') return {Encoding::Utf16Le, 0};
  return {};
}

/// The encoding that a declaration at the beginning names. Only finds it; the reader judges the declaration.
std::string_view DeclaredName(std::string_view text) {
  constexpr std::string_view kBefore = "<?xml";
  constexpr std::string_view kKey = "encoding";
  if (!text.starts_with(kBefore) || text.size() == kBefore.size() ||
      !IsMarkupSpace(static_cast<unsigned char>(text[kBefore.size()]))) {
    return {};
  }
  text = text.substr(0, text.find("?>"));
  const std::size_t key = text.find(kKey);
  if (key == std::string_view::npos) return {};
  text.remove_prefix(key + kKey.size());
  const std::size_t open = text.find_first_of("\"'");
  if (open == std::string_view::npos) return {};
  const std::size_t close = text.find(text[open], open + 1);
  return close == std::string_view::npos ? std::string_view{} : text.substr(open + 1, close - open - 1);
}

std::optional<Encoding> EncodingCalled(std::string_view name) {
  std::string upper(name);
  std::ranges::transform(upper, upper.begin(),
                         [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  const auto found = std::ranges::find(kEncodingNames, upper, &EncodingName::name);
  if (found == kEncodingNames.end()) return std::nullopt;
  return found->encoding;
}

bool IsWide(Encoding encoding) {
  return encoding == Encoding::Utf16 || encoding == Encoding::Utf16Le || encoding == Encoding::Utf16Be;
}

/// Whether bytes that show `actual` may declare `declared`.
bool Agrees(std::optional<Encoding> actual, Encoding declared) {
  if (!actual) return !IsWide(declared);
  return declared == *actual || (declared == Encoding::Utf16 && IsWide(*actual));
}

/// Takes characters off the front of a document's bytes and puts them, line ends unified, behind a text.
class Decoder {
 public:
  Decoder(std::string_view bytes, Encoding encoding) : bytes_(bytes), encoding_(encoding) {
    text_.reserve(bytes.size());
  }

  DecodedMarkup Decode() {
    while (!bytes_.empty()) {
      const auto [character, length] = Next();
      if (length == 0) return Fail("bytes that the encoding does not have");
      if (!IsMarkupCharacter(character)) return Fail("a character that no document may hold");
      bytes_.remove_prefix(length);
      Put(character);
    }
    return std::move(text_);
  }

 private:
  Utf8Character Next() const {
    const auto byte = static_cast<unsigned char>(bytes_[0]);
    switch (encoding_) {
      case Encoding::Utf8:
        return FirstCharacter(bytes_);
      case Encoding::Latin1:
        return {byte, 1};
      case Encoding::Ascii:
        return byte < 0x80 ? Utf8Character{byte, 1} : Utf8Character{0, 0};
      case Encoding::Windows1252:
        if (byte < 0x80 || byte > 0x9F) return {byte, 1};
        return {kWindows1252[byte - 0x80U], kWindows1252[byte - 0x80U] != 0 ? 1U : 0U};
      default:
        return NextWide();
    }
  }

  Utf8Character NextWide() const {
    if (bytes_.size() < 2) return {0, 0};
    const char32_t first = UnitAt(0);
    if (first < 0xD800 || first > 0xDFFF) return {first, 2};
    if (first > 0xDBFF || bytes_.size() < 4) return {0, 0};
    const char32_t second = UnitAt(2);
    if (second < 0xDC00 || second > 0xDFFF) return {0, 0};
    return {0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00), 4};
  }

  char32_t UnitAt(std::size_t offset) const {
    const auto first = static_cast<unsigned char>(bytes_[offset]);
    const auto second = static_cast<unsigned char>(bytes_[offset + 1]);
    return encoding_ == Encoding::Utf16Le ? first + second * 256U : first * 256U + second;
  }

  void Put(char32_t character) {
    ++column_;
    if (character == '\n' && afterReturn_) {
      afterReturn_ = false;
      column_ = 1;
      return;
    }
    afterReturn_ = character == '\r';
    if (afterReturn_ || character == '\n') {
      character = '\n';
      ++line_;
      column_ = 1;
    }
    AppendUtf8(text_, character);
  }

  MarkupError Fail(const char* what) const {
    return {line_, column_, std::string("expected characters of the document's encoding, found ") + what};
  }

  std::string_view bytes_;
  Encoding encoding_;
  std::string text_;
  std::uint32_t line_ = 1;
  std::uint32_t column_ = 1;
  bool afterReturn_ = false;
};

MarkupError EncodingError(std::string_view expected, std::string_view declared) {
  return {1, 1, std::string(expected) + ", found \"" + std::string(declared) + "\""};
}

}  // namespace

DecodedMarkup DecodeMarkup(std::string_view bytes) {
  const Beginning beginning = Inspect(bytes);
  bytes.remove_prefix(beginning.markLength);
  const bool isWide = beginning.encoding && IsWide(*beginning.encoding);
  std::string wideText;
  if (isWide) {
    DecodedMarkup decoded = Decoder(bytes, *beginning.encoding).Decode();
    if (std::holds_alternative<MarkupError>(decoded)) return decoded;
    wideText = std::get<std::string>(std::move(decoded));
  }
  const std::string_view name = DeclaredName(isWide ? wideText : bytes);
  const std::optional<Encoding> declared = EncodingCalled(name.empty() ? "UTF-8" : name);
  if (!declared) return EncodingError("expected the name of a known encoding", name);
  if (!name.empty() && !Agrees(beginning.encoding, *declared)) {
    return EncodingError("expected the encoding that the document's first bytes show", name);
  }
  if (isWide) return wideText;
  return Decoder(bytes, *declared).Decode();
}

}  // namespace emstatus
