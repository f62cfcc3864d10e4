#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "markup/MarkupError.h"

namespace emstatus {

/// A place in the decoded text of a document, and the first error met there. Every reading operation either
/// goes on behind what it names, or calls Fail and answers false. [one thread]
class MarkupCursor {
 public:
  /// `text` is valid UTF-8 with lines that end in "\n"; it outlives the cursor and what is read from it.
  explicit MarkupCursor(std::string_view text) : text_(text) {}

  std::size_t Offset() const { return offset_; }
  bool AtEnd() const { return offset_ == text_.size(); }
  bool LooksAt(std::string_view literal) const { return Rest().starts_with(literal); }

  /// Goes behind `literal` when it stands here; false otherwise, which is no error.
  bool Accept(std::string_view literal);
  /// Goes behind white space; false when there was none, which is no error.
  bool SkipSpace();
  /// What stands before the first of `characters`, or before the end.
  std::string_view TakeUntilAny(std::string_view characters);
  /// One quote, single or double, which is told in `quote`; false otherwise, which is no error.
  bool AcceptQuote(char& quote);

  bool Expect(std::string_view literal);
  bool ExpectSpace();
  bool ReadName(std::string_view& name);
  /// What stands before `literal`, going behind that too.
  bool ReadThrough(std::string_view literal, std::string_view& before);
  /// A text in quotes, without them.
  bool ReadQuoted(std::string_view& text);

  /// Remembers, unless something failed before, that `expected` does not stand here (at `offset`). Always
  /// false.
  bool Fail(std::string_view expected) { return FailAt(offset_, expected); }
  bool FailAt(std::size_t offset, std::string_view expected);

  const MarkupError& Error() const { return error_; }

 private:
  std::string_view Rest() const { return text_.substr(offset_); }

  std::string_view text_;
  std::size_t offset_ = 0;
  MarkupError error_;
};

}  // namespace emstatus
