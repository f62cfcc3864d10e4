#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct gzFile_s;

namespace emstatus::host {

/// Text that is compressed into a new file. Each operation throws a std::runtime_error that names the file
/// and what is wrong with it. [one thread]
class GzipWriter {
 public:
  /// A file that is there already is only written over with `force`.
  GzipWriter(const std::string& path, bool force);

  void Write(std::string_view text);
  /// From here on the file holds all that was written, whatever becomes of this process.
  void Flush();
  /// Writes the end of the file. Without it the file reads as cut.
  void Close();

 private:
  struct Abandon {
    void operator()(gzFile_s* file) const;
  };
  [[noreturn]] void ThrowFailure() const;

  const std::string path_;
  std::unique_ptr<gzFile_s, Abandon> file_;
};

/// The lines of a compressed file, or of a plain one. [one thread]
class GzipLines {
 public:
  static constexpr std::size_t kLongestLine = std::size_t{16} << 20;
  static constexpr std::uint64_t kLargestText = std::uint64_t{8} << 30;

  /// Throws a std::runtime_error when the file cannot be opened or is no ordinary one.
  explicit GzipLines(const std::string& path);

  /// The next line without its end; false behind the last one. Throws a std::runtime_error that names file
  /// and line when the file is broken, and when a line or the whole text is larger than any recording.
  bool Next(std::string& line);

  /// "FILE, line N" of the line last read.
  std::string Place() const;

  /// The file ends in the middle, of a line or of its compressed form. Known behind the last line.
  bool IsCut() const { return cut_; }

 private:
  struct Close {
    void operator()(gzFile_s* file) const;
  };
  bool Fill();

  const std::string path_;
  std::unique_ptr<gzFile_s, Close> file_;
  std::string text_;
  std::size_t used_ = 0;
  std::uint64_t total_ = 0;
  std::uint64_t number_ = 0;
  bool cut_ = false;
};

}  // namespace emstatus::host
