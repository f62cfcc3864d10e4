#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace emstatus::test {

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (fs::temp_directory_path() / "emstatus-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder: " + pattern);
  path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string TemporaryDirectory::Write(std::string_view name, std::string_view text) const {
  const fs::path path = path_ / name;
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
  return path.string();
}

std::string TemporaryDirectory::Read(std::string_view name) const {
  std::ifstream file(path_ / name, std::ios::binary);
  EXPECT_TRUE(file) << "cannot read " << (path_ / name);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace emstatus::test
