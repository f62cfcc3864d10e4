#include "tests/host/providers/MachineText.h"

#include <algorithm>
#include <stdexcept>

#include "host/providers/KernelText.h"

namespace emstatus::test {

MachineFolder::FileTable ParseMachine(std::string_view text) {
  MachineFolder::FileTable files;
  std::string folder;
  std::size_t number = 0;
  for (const std::string_view line : host::Lines(text)) {
    ++number;
    const std::string_view content = host::Trimmed(line);
    if (content.empty() || content.starts_with('#')) {
      continue;
    }
    const std::size_t equals = line.find(" =");
    const std::size_t arrow = line.find(" -> ");
    const std::size_t end = std::min(equals, arrow);
    if (end == std::string_view::npos && line.starts_with('/') && line.ends_with('/')) {
      folder = line;
      continue;
    }
    const std::string_view name = host::Trimmed(line.substr(0, end));
    const bool isWhole = name.starts_with('/');
    if (end == std::string_view::npos || (!isWhole && (folder.empty() || !line.starts_with("  ")))) {
      throw std::runtime_error("line " + std::to_string(number) +
                               ": neither a file nor a link: " + std::string(line));
    }
    const std::string path = isWhole ? std::string(name) : folder + std::string(name);
    if (arrow < equals) {
      files.push_back({path, std::string(host::Trimmed(line.substr(arrow)))});
      continue;
    }
    const std::size_t from = std::min(equals + 3, line.size());
    const auto known = std::ranges::find(files, path, &MachineFolder::File::path);
    MachineFolder::File& file =
        known == files.end() ? files.emplace_back(MachineFolder::File{path, ""}) : *known;
    file.text += std::string(line.substr(from)) + "\n";
  }
  return files;
}

}  // namespace emstatus::test
