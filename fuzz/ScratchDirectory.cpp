#include "fuzz/ScratchDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <system_error>

#include "fuzz/Check.h"
#include "platform/FileDescriptor.h"

namespace emstatus::fuzz {
namespace {

std::string Made() {
  const bool inMemory = ::access("/dev/shm", W_OK) == 0;
  const std::string base = inMemory ? "/dev/shm" : std::filesystem::temp_directory_path().string();
  std::string path = base + "/emstatus-fuzz-XXXXXX";
  EM_FUZZ_CHECK(::mkdtemp(path.data()) != nullptr);
  return path;
}

}  // namespace

ScratchDirectory::ScratchDirectory() : path_(Made()) {}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void ScratchDirectory::Write(std::string_view name, std::string_view text) const {
  const FileDescriptor file(::open((path_ / name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  EM_FUZZ_CHECK(file.IsOpen() && file.Write(text));
}

std::string ScratchDirectory::Read(std::string_view name) const {
  const FileDescriptor file(::open((path_ / name).c_str(), O_RDONLY | O_CLOEXEC));
  EM_FUZZ_CHECK(file.IsOpen());
  return file.ReadToEnd();
}

}  // namespace emstatus::fuzz
