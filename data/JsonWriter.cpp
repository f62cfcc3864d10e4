#include "data/JsonWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "data/CommandValue.h"

namespace emstatus {
namespace {

constexpr std::array<char, 256> EscapeTable() {
  std::array<char, 256> table{};
  constexpr std::string_view kControls = "uuuuuuuubtnufruuuuuuuuuuuuuuuuuu";
  std::ranges::copy(kControls, table.begin());
  table['"'] = '"';
  table['\\'] = '\\';
  return table;
}

constexpr std::array<char, 256> kEscapes = EscapeTable();

constexpr std::size_t kLongestEscape = 6;

/// Eight bytes with the same value.
constexpr std::uint64_t Eight(unsigned char byte) {
  return UINT64_C(0x0101010101010101) * byte;
}

/// Whether one of eight bytes may need an escape; always true when one does.
bool MayNeedEscape(std::uint64_t word) {
  const auto marksBelow = [](std::uint64_t bytes, unsigned char limit) {
    return (bytes - Eight(limit)) & ~bytes;
  };
  const std::uint64_t marks =
      marksBelow(word, 0x20) | marksBelow(word ^ Eight('"'), 1) | marksBelow(word ^ Eight('\\'), 1);
  return (marks & Eight(0x80)) != 0;
}

/// Writes one character escaped and returns the end of what it wrote.
char* EscapeInto(char* out, char character) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(character);
  const char escape = kEscapes[byte];
  if (escape == '\0') {
    *out++ = character;
    return out;
  }
  *out++ = '\\';
  *out++ = escape;
  if (escape != 'u') return out;
  *out++ = '0';
  *out++ = '0';
  *out++ = kHex[byte >> 4];
  *out++ = kHex[byte & 15];
  return out;
}

/// The same for a text. Clean words, the last of them reaching back over what was written before, are copied
/// whole.
char* EscapeInto(char* out, std::string_view text) {
  const char* next = text.data();
  const char* const end = next + text.size();
  std::uint64_t word = 0;
  constexpr std::size_t kWord = sizeof(word);
  while (static_cast<std::size_t>(end - next) >= kWord) {
    std::memcpy(&word, next, kWord);
    if (MayNeedEscape(word)) {
      for (const char* const stop = next + kWord; next != stop;) out = EscapeInto(out, *next++);
    } else {
      std::memcpy(out, &word, kWord);
      out += kWord;
      next += kWord;
    }
  }
  if (text.size() >= kWord && next != end) {
    std::memcpy(&word, end - kWord, kWord);
    if (!MayNeedEscape(word)) {
      out += end - next;
      std::memcpy(out - kWord, &word, kWord);
      return out;
    }
  }
  while (next != end) out = EscapeInto(out, *next++);
  return out;
}

bool IsWritten(const CommandValue& value) {
  return KindOf(value) <= CommandKind::Number;
}

/// Before the value that follows `written` others on its level.
char Separator(std::uint64_t written, bool isArray) {
  return isArray || written % 2 == 0 ? ',' : ':';
}

}  // namespace

JsonWriter::JsonWriter(std::size_t startCapacity) {
  Reserve(startCapacity);
}

JsonWriter::~JsonWriter() {
  std::free(buffer_);
}

void JsonWriter::Grow(std::size_t needed) {
  const std::size_t wanted = std::max(size_ + needed, 2 * capacity_);
  void* grown = std::realloc(buffer_, wanted);
  if (grown == nullptr) throw std::bad_alloc();
  buffer_ = static_cast<char*>(grown);
  capacity_ = wanted;
}

const char* JsonWriter::TerminatedText() {
  Reserve(1);
  buffer_[size_] = '\0';
  return buffer_;
}

OwnedValue JsonWriter::TakeText() {
  if (size_ > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
  TerminatedText();
  capacity_ = 0;
  return OwnedValue::AdoptText(std::exchange(buffer_, nullptr),
                               static_cast<std::uint32_t>(std::exchange(size_, 0)));
}

const CommandValue& JsonWriter::WriteValue(const CommandValue& value) {
  if (!IsContainer(value)) {
    WriteLeaf(value);
    return value;
  }
  std::vector<Level> outer;
  Level level = Open(value);
  for (;;) {
    if (level.left == 0) {
      Put(level.isArray ? ']' : '}');
      if (outer.empty()) return value;
      level = outer.back();
      outer.pop_back();
      continue;
    }
    --level.left;
    const CommandValue& next = *level.next++;
    const bool isName = !level.isArray && level.left % 2 == 1;
    if (!isName && !IsWritten(next)) continue;
    if (level.written != 0) Put(Separator(level.written, level.isArray));
    ++level.written;
    if (isName) {
      WriteText(TextOf(next));
    } else if (IsContainer(next)) {
      outer.push_back(level);
      level = Open(next);
    } else {
      WriteLeaf(next);
    }
  }
}

JsonWriter::Level JsonWriter::Open(const CommandValue& value) {
  if (KindOf(value) == CommandKind::Array) {
    Put('[');
    const auto elements = Elements(value);
    return {elements.data(), elements.size(), 0, true};
  }
  Put('{');
  const auto members = Members(value);
  return {reinterpret_cast<const CommandValue*>(members.data()), 2 * std::uint64_t{members.size()}, 0, false};
}

void JsonWriter::WriteLeaf(const CommandValue& value) {
  switch (KindOf(value)) {
    case CommandKind::Null:
      return WriteJson("null");
    case CommandKind::False:
      return WriteJson("false");
    case CommandKind::True:
      return WriteJson("true");
    case CommandKind::String:
      return WriteText(TextOf(value));
    case CommandKind::Number:
      return WriteNumber(value);
    default:
      return;
  }
}

void JsonWriter::WriteNumber(const CommandValue& value) {
  constexpr std::size_t kLongest = 100;
  Reserve(kLongest);
  char* const first = buffer_ + size_;
  char* const last = first + kLongest;
  std::to_chars_result end{};
  if ((value.tag & tagbit::kFitsInt32) != 0) {
    end = std::to_chars(first, last, static_cast<std::int32_t>(value.signedNumber));
  } else if ((value.tag & tagbit::kFitsUInt32) != 0) {
    end = std::to_chars(first, last, static_cast<std::uint32_t>(value.unsignedNumber));
  } else if ((value.tag & tagbit::kFitsInt64) != 0) {
    end = std::to_chars(first, last, value.signedNumber);
  } else if ((value.tag & tagbit::kFitsUInt64) != 0) {
    end = std::to_chars(first, last, value.unsignedNumber);
  } else {
    // "%g" of the C locale: a host's own locale must not put a comma into the number.
    end = std::to_chars(first, last, value.floatNumber, std::chars_format::general, 6);
  }
  size_ += static_cast<std::size_t>(end.ptr - first);
}

void JsonWriter::WriteNumber(std::uint32_t number) {
  constexpr std::size_t kLongest = 10;
  Reserve(kLongest);
  char* const first = buffer_ + size_;
  size_ += static_cast<std::size_t>(std::to_chars(first, first + kLongest, number).ptr - first);
}

void JsonWriter::WriteText(std::string_view text) {
  // One check of the room for a piece, not one for a byte.
  constexpr std::size_t kPiece = 256;
  Put('"');
  do {
    const std::string_view piece = text.substr(0, kPiece);
    Reserve(kLongestEscape * piece.size() + 1);
    size_ = static_cast<std::size_t>(EscapeInto(buffer_ + size_, piece) - buffer_);
    text.remove_prefix(piece.size());
  } while (!text.empty());
  buffer_[size_++] = '"';
}

std::string JsonText(const CommandValue& value) {
  JsonWriter writer;
  writer.WriteValue(value);
  return std::string(writer.Text());
}

}  // namespace emstatus
