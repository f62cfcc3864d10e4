#include "data/JsonWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

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

char EscapeOf(char character) {
  return kEscapes[static_cast<unsigned char>(character)];
}

bool IsContainer(const CommandValue& value) {
  return KindOf(value) == CommandKind::Object || KindOf(value) == CommandKind::Array;
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

void JsonWriter::Reserve(std::size_t needed) {
  if (needed <= capacity_ - size_) return;
  const std::size_t wanted = std::max(size_ + needed, 2 * capacity_);
  void* grown = std::realloc(buffer_, wanted);
  if (grown == nullptr) throw std::bad_alloc();
  buffer_ = static_cast<char*>(grown);
  capacity_ = wanted;
}

void JsonWriter::Put(char character) {
  Reserve(1);
  buffer_[size_++] = character;
}

void JsonWriter::Put(std::string_view text) {
  Reserve(text.size());
  if (!text.empty()) std::memcpy(buffer_ + size_, text.data(), text.size());
  size_ += text.size();
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
  std::vector<Level> levels;
  Open(value, levels);
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.left == 0) {
      Put(level.isArray ? ']' : '}');
      levels.pop_back();
      continue;
    }
    --level.left;
    const CommandValue& next = *level.next++;
    const bool isName = !level.isArray && level.left % 2 == 1;
    if (!isName && !IsWritten(next)) continue;
    if (level.written != 0) Put(Separator(level.written, level.isArray));
    ++level.written;
    if (isName) {
      const std::string_view name = TextOf(next);
      WriteString(name.data(), static_cast<std::uint32_t>(name.size()));
    } else if (IsContainer(next)) {
      Open(next, levels);
    } else {
      WriteLeaf(next);
    }
  }
  return value;
}

void JsonWriter::Open(const CommandValue& value, std::vector<Level>& levels) {
  if (KindOf(value) == CommandKind::Array) {
    const auto elements = Elements(value);
    levels.push_back({elements.data(), elements.size(), 0, true});
    Put('[');
  } else {
    const auto members = Members(value);
    levels.push_back(
        {reinterpret_cast<const CommandValue*>(members.data()), 2 * std::uint64_t{members.size()}, 0, false});
    Put('{');
  }
}

void JsonWriter::WriteLeaf(const CommandValue& value) {
  switch (KindOf(value)) {
    case CommandKind::Null:
      return Put("null");
    case CommandKind::False:
      return Put("false");
    case CommandKind::True:
      return Put("true");
    case CommandKind::String: {
      const std::string_view text = TextOf(value);
      return WriteString(text.data(), static_cast<std::uint32_t>(text.size()));
    }
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

void JsonWriter::WriteString(const char* text, std::uint32_t length) {
  const char* const end = text + length;
  Reserve(std::size_t{length} + 2);
  Put('"');
  for (const char* run = text; run != end;) {
    const char* stop = std::find_if(run, end, [](char character) { return EscapeOf(character) != '\0'; });
    Put(std::string_view(run, static_cast<std::size_t>(stop - run)));
    if (stop == end) break;
    Put('\\');
    Put(EscapeOf(*stop));
    if (EscapeOf(*stop) == 'u') {
      constexpr std::string_view kHex = "0123456789ABCDEF";
      const auto byte = static_cast<unsigned char>(*stop);
      const char digits[] = {'0', '0', kHex[byte >> 4], kHex[byte & 15]};
      Put(std::string_view(digits, sizeof(digits)));
    }
    run = stop + 1;
  }
  Put('"');
}

std::string JsonText(const CommandValue& value) {
  JsonWriter writer;
  writer.WriteValue(value);
  return std::string(writer.Text());
}

}  // namespace emstatus
