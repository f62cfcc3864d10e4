#pragma once

#include <emstatus/CommandValue.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "data/OwnedValue.h"

namespace emstatus {

/// Writes command values as compact JSON text, at any depth of nesting. Members come in stored order;
/// floating-point numbers have six significant digits; values of a kind above 6 leave no trace.
/// Operations throw std::bad_alloc when memory runs out. [one thread at a time]
class JsonWriter {
 public:
  /// The buffer starts with `startCapacity` bytes and at least doubles when it is full.
  explicit JsonWriter(std::size_t startCapacity = 1024);
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;
  ~JsonWriter();

  /// Appends `value` with everything below it and returns it.
  const CommandValue& WriteValue(const CommandValue& value);

  /// Appends a text in quotes, escaped. Bytes above 0x7F stay as they are.
  void WriteText(std::string_view text);
  void WriteString(const char* text, std::uint32_t length) { WriteText({text, length}); }

  /// Appends a number.
  void WriteNumber(std::uint32_t number);

  /// Appends JSON text as it is: what stands between values that are written one by one.
  void WriteJson(std::string_view text) {
    Reserve(text.size());
    if (!text.empty()) std::memcpy(buffer_ + size_, text.data(), text.size());
    size_ += text.size();
  }

  /// What was written so far; valid until the next operation.
  std::string_view Text() const noexcept { return {buffer_, size_}; }

  /// The same, ended by a zero byte that does not count.
  const char* TerminatedText();

  /// The text as an owned string value, without a copy; the writer is empty afterwards.
  OwnedValue TakeText();

 private:
  /// An object or array being written. A member counts as two values, its name and what it names.
  struct Level {
    const CommandValue* next;
    std::uint64_t left;
    std::uint64_t written;
    bool isArray;
  };

  Level Open(const CommandValue& value);
  void WriteLeaf(const CommandValue& value);
  void WriteNumber(const CommandValue& value);
  void Put(char character) {
    Reserve(1);
    buffer_[size_++] = character;
  }
  void Reserve(std::size_t needed) {
    if (needed > capacity_ - size_) Grow(needed);
  }
  void Grow(std::size_t needed);

  char* buffer_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

/// The JSON text of one value.
std::string JsonText(const CommandValue& value);

}  // namespace emstatus
