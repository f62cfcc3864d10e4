#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include "bench/Benchmarks.h"
#include "platform/PrivateProfile.h"

namespace emstatus::bench {
namespace {

constexpr int kSections = 300;
constexpr int kEntries = 20;
constexpr std::size_t kPieceSize = 65536;
const std::string kLastSection = "Component.Sensor" + std::to_string(kSections - 1);
const std::string kLastKey = "Status.Entry" + std::to_string(kEntries - 1);

/// A configuration of 300 components, in which every look-up here goes to the end.
class ProfileText {
 public:
  ProfileText() : path_(std::filesystem::temp_directory_path() / ("bench-" + std::to_string(getpid()))) {
    std::ofstream stream(path_);
    for (int section = 0; section < kSections; ++section) {
      stream << "[Component.Sensor" << section << "]\n; how it is judged\n";
      for (int entry = 0; entry < kEntries; ++entry) {
        stream << "Status.Entry" << entry << " = <CMD Context=\"TRIQ\" OC=\"0101\" OE=\"0002\"/> ; note\n";
      }
    }
    if (!stream.flush()) {
      throw std::runtime_error("cannot write " + path_.string());
    }
  }
  ProfileText(const ProfileText&) = delete;
  ProfileText& operator=(const ProfileText&) = delete;
  ~ProfileText() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  const char* Path() const { return path_.c_str(); }

 private:
  const std::filesystem::path path_;
};

const char* TextPath() {
  static const ProfileText text;
  return text.Path();
}

void BareRead(benchmark::State& state) {
  const char* const path = TextPath();
  static std::array<char, kPieceSize> piece;
  for (auto _ : state) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    std::size_t sum = 0;
    for (ssize_t count = 1; count > 0; sum += std::size_t(count)) {
      count = read(file, piece.data(), piece.size());
    }
    close(file);
    benchmark::DoNotOptimize(sum);
  }
}

void LookUp(benchmark::State& state) {
  const char* const path = TextPath();
  std::array<char, 256> value{};
  for (auto _ : state) {
    const auto length = GetPrivateProfileString(kLastSection.c_str(), kLastKey.c_str(), nullptr, value.data(),
                                                value.size(), path);
    if (length == 0) {
      state.SkipWithError("not found");
    }
  }
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

/// As one would write it first: each line is read, cut at its comment, trimmed, copied and compared.
void LineByLine(benchmark::State& state) {
  const char* const path = TextPath();
  const std::string header = "[" + kLastSection + "]";
  std::array<char, 1024> raw{};
  for (auto _ : state) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "r"), std::fclose);
    bool inside = false;
    std::string found;
    while (found.empty() && std::fgets(raw.data(), raw.size(), file.get()) != nullptr) {
      const std::string_view whole = raw.data();
      const std::string line(Trimmed(whole.substr(0, whole.find(';'))));
      const std::size_t equals = line.find('=');
      if (line.starts_with('[')) {
        inside = line == header;
      } else if (inside && equals != std::string::npos && Trimmed(line.substr(0, equals)) == kLastKey) {
        found = Trimmed(std::string_view(line).substr(equals + 1));
      }
    }
    if (found.empty()) {
      state.SkipWithError("not found");
    }
  }
}

}  // namespace

void RegisterProfile() {
  benchmark::RegisterBenchmark("profile look-up/bare read of the file", BareRead);
  benchmark::RegisterBenchmark("profile look-up/GetPrivateProfileString", LookUp);
  benchmark::RegisterBenchmark("profile look-up/fgets, trim, compare", LineByLine);
}

}  // namespace emstatus::bench
