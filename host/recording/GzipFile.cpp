#include "host/recording/GzipFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace emstatus::host {
namespace {

constexpr unsigned kReadPiece = 256U << 10;

std::string SystemText(int error) {
  return std::generic_category().message(error);
}

int OpenNew(const std::string& path, bool force) {
  const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | (force ? O_TRUNC : O_EXCL);
  const int file = open(path.c_str(), flags, 0644);
  if (file < 0 && errno == EEXIST) {
    throw std::runtime_error(path + " is there already; give another name, or --force to write over it");
  }
  if (file < 0) {
    throw std::runtime_error("cannot write " + path + ": " + SystemText(errno));
  }
  return file;
}

int OpenOrdinary(const std::string& path) {
  // A pipe under this name must not hold the program up.
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) {
    throw std::runtime_error("cannot read " + path + ": " + SystemText(errno));
  }
  struct stat status {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(file);
    throw std::runtime_error("cannot read " + path + ": it is no ordinary file");
  }
  return file;
}

gzFile Opened(int descriptor, const char* mode, const std::string& path) {
  const gzFile file = gzdopen(descriptor, mode);
  if (file == nullptr) {
    close(descriptor);
    throw std::runtime_error("cannot open " + path + ": out of memory");
  }
  return file;
}

}  // namespace

void GzipWriter::Abandon::operator()(gzFile_s* file) const {
  // Writes what it can, and the end with it. What was not flushed is no part of a whole scan.
  static_cast<void>(gzclose_w(file));
}

GzipWriter::GzipWriter(const std::string& path, bool force)
    : path_(path), file_(Opened(OpenNew(path, force), "wb6", path)) {}

void GzipWriter::ThrowFailure() const {
  const int error = errno;
  int code = Z_OK;
  const char* text = gzerror(file_.get(), &code);
  throw std::runtime_error("cannot write " + path_ + ": " + (code == Z_ERRNO ? SystemText(error) : text));
}

void GzipWriter::Write(std::string_view text) {
  if (!text.empty() && gzfwrite(text.data(), text.size(), 1, file_.get()) != 1) {
    ThrowFailure();
  }
}

void GzipWriter::Flush() {
  if (gzflush(file_.get(), Z_SYNC_FLUSH) != Z_OK) {
    ThrowFailure();
  }
}

void GzipWriter::Close() {
  if (const int code = gzclose_w(file_.release()); code != Z_OK) {
    throw std::runtime_error("cannot write the end of " + path_ + ": " +
                             (code == Z_ERRNO ? SystemText(errno) : zError(code)));
  }
}

void GzipLines::Close::operator()(gzFile_s* file) const {
  static_cast<void>(gzclose_r(file));
}

GzipLines::GzipLines(const std::string& path) : path_(path), file_(Opened(OpenOrdinary(path), "rb", path)) {}

std::string GzipLines::Place() const {
  return path_ + ", line " + std::to_string(number_);
}

/// False at the end of the file.
bool GzipLines::Fill() {
  text_.erase(0, used_);
  used_ = 0;
  const std::size_t before = text_.size();
  text_.resize(before + kReadPiece);
  const int count = gzread(file_.get(), text_.data() + before, kReadPiece);
  text_.resize(before + std::size_t(std::max(count, 0)));
  if (count > 0) {
    total_ += std::uint64_t(count);
    return true;
  }
  int code = Z_OK;
  const char* text = gzerror(file_.get(), &code);
  cut_ = cut_ || code == Z_BUF_ERROR;
  if (count < 0 && code != Z_BUF_ERROR) {
    throw std::runtime_error(Place() + ": the file is broken behind this line (" +
                             (code == Z_ERRNO ? SystemText(errno) : text) + ")");
  }
  return false;
}

bool GzipLines::Next(std::string& line) {
  std::size_t searched = used_;
  for (;;) {
    if (const std::size_t end = text_.find('\n', searched); end != std::string::npos) {
      line.assign(text_, used_, end - used_);
      used_ = end + 1;
      ++number_;
      return true;
    }
    if (text_.size() - used_ > kLongestLine || total_ > kLargestText) {
      throw std::runtime_error(Place() + ": what follows is larger than any recording");
    }
    searched = text_.size() - used_;
    if (!Fill()) {
      cut_ = cut_ || !text_.empty();
      return false;
    }
  }
}

}  // namespace emstatus::host
