#include "fuzz/MemoryFile.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fuzz/Check.h"

namespace emstatus::fuzz {

MemoryFile::MemoryFile()
    : file_(::memfd_create("fuzz", MFD_CLOEXEC)), path_("/proc/self/fd/" + std::to_string(file_)) {
  EM_FUZZ_CHECK(file_ >= 0);
}

MemoryFile::~MemoryFile() {
  ::close(file_);
}

void MemoryFile::Write(std::string_view text) {
  EM_FUZZ_CHECK(::ftruncate(file_, 0) == 0);
  EM_FUZZ_CHECK(::pwrite(file_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
}

std::string MemoryFile::Read() const {
  struct stat status {};
  EM_FUZZ_CHECK(::fstat(file_, &status) == 0);
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  EM_FUZZ_CHECK(::pread(file_, text.data(), text.size(), 0) == status.st_size);
  return text;
}

}  // namespace emstatus::fuzz
