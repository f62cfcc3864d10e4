#include "host/configuration/UnpausedConfiguration.h"

#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <system_error>

namespace emstatus::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kConfigurationName = "EM_STATUS.ini";
constexpr const char* kSimulationName = "EM_STATUS_simu.ini";
constexpr std::uintmax_t kLargestConfiguration = 64U << 20;

constexpr std::array<std::string_view, 3> kPauses{"InitialPollingDelaySeconds", "PollingRateSeconds",
                                                  "AdvancedPollingRateSeconds"};
constexpr std::string_view kPausesHeader = "[Configuration]";

/// The module reads lines in pieces of at most so many characters.
constexpr std::size_t kLongestPiece = 1023;

[[noreturn]] void ThrowFileError(int error, const std::string& what) {
  throw std::system_error(error, std::generic_category(), what);
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\n\v\f\r";
  const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// What counts of a line: neither its comment, nor what is behind a NUL, nor blanks at its ends.
std::string_view ContentOf(std::string_view line) {
  line = line.substr(0, line.find('\0'));
  return Trimmed(line.substr(0, line.find(';')));
}

/// Copies a configuration line by line and changes the section of the pauses, of which the first counts.
class PauseRemover {
 public:
  void Take(std::string_view line) {
    const std::string_view content = ContentOf(line);
    if (content.starts_with('[')) {
      EndSection();
      inside_ = !done_ && content.substr(0, content.find(']') + 1) == kPausesHeader;
    } else if (inside_ && TakeEntry(content)) {
      return;
    }
    text_ += line;
  }

  std::string Finish() {
    if (!done_ && !inside_) {
      EndLine();
      text_ += std::string(kPausesHeader) + "\n";
      inside_ = true;
    }
    EndSection();
    return std::move(text_);
  }

 private:
  /// True when the line was a pause, which is written without one.
  bool TakeEntry(std::string_view content) {
    const std::size_t equals = content.find('=');
    const auto pause = equals == std::string_view::npos
                           ? kPauses.end()
                           : std::ranges::find(kPauses, Trimmed(content.substr(0, equals)));
    if (pause == kPauses.end()) {
      return false;
    }
    Write(std::size_t(pause - kPauses.begin()));
    return true;
  }

  void Write(std::size_t pause) {
    EndLine();
    text_ += std::string(kPauses[pause]) + "=0\n";
    written_[pause] = true;
  }

  void EndLine() {
    if (!text_.empty() && text_.back() != '\n') {
      text_ += '\n';
    }
  }

  void EndSection() {
    for (std::size_t pause = 0; inside_ && pause < kPauses.size(); ++pause) {
      if (!written_[pause]) {
        Write(pause);
      }
    }
    done_ = done_ || inside_;
    inside_ = false;
  }

  std::string text_;
  std::array<bool, kPauses.size()> written_{};
  bool inside_ = false;
  bool done_ = false;
};

void WriteConfigurationFile(const fs::path& path, std::string_view text) {
  std::ofstream stream(path, std::ios::binary);
  stream.write(text.data(), std::streamsize(text.size())).flush();
  if (!stream) {
    ThrowFileError(errno, "cannot write " + path.string());
  }
}

fs::path NewFolder() {
  std::string name = (fs::absolute(fs::temp_directory_path()) / "emhost-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    ThrowFileError(errno, "cannot make a temporary folder " + name);
  }
  return name;
}

}  // namespace

std::string WithoutPauses(std::string_view configurationText) {
  PauseRemover remover;
  while (!configurationText.empty()) {
    const std::string_view piece = configurationText.substr(0, kLongestPiece);
    const std::size_t length = std::min(piece.find('\n'), piece.size() - 1) + 1;
    remover.Take(configurationText.substr(0, length));
    configurationText.remove_prefix(length);
  }
  return remover.Finish();
}

std::string ReadConfigurationFile(const fs::path& path) {
  const std::uintmax_t size = fs::file_size(path);
  if (size > kLargestConfiguration) {
    ThrowFileError(EFBIG, "cannot read " + path.string());
  }
  std::ifstream stream(path, std::ios::binary);
  std::string text(size, '\0');
  stream.read(text.data(), std::streamsize(size));
  if (!stream) {
    ThrowFileError(errno, "cannot read " + path.string());
  }
  return text;
}

UnpausedConfiguration::UnpausedConfiguration(std::string_view configuration,
                                             const std::optional<std::string>& simulation)
    : folder_(NewFolder()) {
  try {
    WriteConfigurationFile(folder_ / kConfigurationName, WithoutPauses(configuration));
    if (simulation) {
      WriteConfigurationFile(folder_ / kSimulationName, *simulation);
    }
  } catch (...) {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
    throw;
  }
}

UnpausedConfiguration::~UnpausedConfiguration() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

UnpausedConfiguration UnpausedConfiguration::Of(const fs::path& folder) {
  std::optional<std::string> simulation;
  std::error_code ignored;
  if (fs::is_regular_file(folder / kSimulationName, ignored)) {
    simulation = ReadConfigurationFile(folder / kSimulationName);
  }
  return UnpausedConfiguration(ReadConfigurationFile(folder / kConfigurationName), simulation);
}

}  // namespace emstatus::host
