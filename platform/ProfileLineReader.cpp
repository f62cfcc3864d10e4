#include "platform/ProfileLineReader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace emstatus {

namespace {

constexpr std::size_t kPieceSize = 65536;

/// In front of the piece, for the line that the piece before ended in.
constexpr std::size_t kKeptSize = 1024;
static_assert(kKeptSize >= ProfileLineReader::kLongestLine);

const char* Find(const char* begin, const char* end, char wanted) {
  return static_cast<const char*>(std::memchr(begin, wanted, static_cast<std::size_t>(end - begin)));
}

}  // namespace

ProfileLineReader::ProfileLineReader(int file)
    : file_(file), buffer_(new char[kKeptSize + kPieceSize]), next_(buffer_.get() + kKeptSize), end_(next_) {}

// Less than a line is left.
void ProfileLineReader::Fill() {
  char* const piece = buffer_.get() + kKeptSize;
  const auto kept = static_cast<std::size_t>(end_ - next_);
  std::memmove(piece - kept, next_, kept);
  ssize_t got;
  do {
    got = ::read(file_, piece, kPieceSize);
  } while (got < 0 && errno == EINTR);
  atEnd_ = got <= 0;
  next_ = piece - kept;
  end_ = piece + (got > 0 ? static_cast<std::size_t>(got) : 0);
}

void ProfileLineReader::Advance(std::size_t length) {
  next_ += length;
  offset_ += length;
}

bool ProfileLineReader::Next(std::string_view& line) {
  for (;;) {
    const std::size_t limit = std::min(static_cast<std::size_t>(end_ - next_), kLongestLine);
    const char* const lineFeed = Find(next_, next_ + limit, '\n');
    if (lineFeed == nullptr && limit < kLongestLine && !atEnd_) {
      Fill();
      continue;
    }
    const std::size_t length = lineFeed != nullptr ? static_cast<std::size_t>(lineFeed - next_) + 1 : limit;
    line = {next_, length};
    lineStart_ = offset_;
    Advance(length);
    return length != 0;
  }
}

// next_ is the start of a line, and so every 1023rd character after it is, up to the next line feed.
void ProfileLineReader::SkipToLineOf(const char* place) {
  const auto ahead = static_cast<std::size_t>(place - next_);
  if (const void* const lineFeed = memrchr(next_, '\n', ahead)) {
    Advance(static_cast<std::size_t>(static_cast<const char*>(lineFeed) + 1 - next_));
  }
  const auto inLine = static_cast<std::size_t>(place - next_);
  Advance(inLine - inLine % kLongestLine);
}

// Whether next_ could be moved to the start of the line whose first character beside blanks is `bracket`.
bool ProfileLineReader::SkipToHeader(const char* bracket) {
  if (bracket == next_ || bracket[-1] == '\n') {
    Advance(static_cast<std::size_t>(bracket - next_));
    return true;
  }
  // Most brackets stand within a value. So near to next_ a line begins only there or after a line feed.
  const bool isNear = bracket - next_ < static_cast<std::ptrdiff_t>(kLongestLine);
  if (isNear && !IsProfileBlank(bracket[-1])) return false;
  SkipToLineOf(bracket);
  return std::all_of(next_, bracket, IsProfileBlank);
}

bool ProfileLineReader::NextHeader(std::string_view& line, std::string_view start) {
  for (;;) {
    const char* from = next_;
    while (const char* const bracket = Find(from, end_, '[')) {
      from = bracket + 1;
      if (!SkipToHeader(bracket)) continue;
      const std::string_view read(bracket, static_cast<std::size_t>(end_ - bracket));
      if (read.size() >= start.size() && !read.starts_with(start)) continue;
      const auto blanks = static_cast<std::size_t>(bracket - next_);
      Next(line);
      if (line.substr(blanks).starts_with(start)) return true;
      from = next_;
    }
    SkipToLineOf(end_);
    if (atEnd_) return false;
    Fill();
  }
}

}  // namespace emstatus
