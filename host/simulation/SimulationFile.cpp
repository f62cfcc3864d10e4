#include "host/simulation/SimulationFile.h"

#include <algorithm>
#include <ctime>
#include <utility>
#include <vector>

#include "host/configuration/IniFile.h"
#include "host/machine/TimeText.h"

namespace emstatus::host {
namespace {

constexpr const char* kFileName = "EM_STATUS_simu.ini";
constexpr const char* kTimeFormat = "%Y-%m-%dT%H:%M:%SZ";
constexpr const char* kForEver = "ever";

std::string TimeToText(WallTime time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[32];
  return {text, std::strftime(text, sizeof(text), kTimeFormat, &parts)};
}

std::optional<WallTime> TimeFromText(const std::string& text) {
  std::tm parts{};
  const char* end = strptime(text.c_str(), kTimeFormat, &parts);
  if (end == nullptr || *end != '\0') {
    return std::nullopt;
  }
  return WallTime(std::chrono::seconds(timegm(&parts)));
}

void ReadEnd(const IniFile& ini, SimulationFile& file) {
  const std::string until = ini.Value("Emhost", "Until").value_or("");
  file.until = TimeFromText(until);
  file.byHand = !file.until && until != kForEver;
}

/// The parts of a key between its dots, empty ones dropped.
std::vector<std::string_view> SplitAtDots(std::string_view key) {
  std::vector<std::string_view> words;
  for (std::size_t begin = key.find_first_not_of('.'); begin < key.size();) {
    const std::size_t end = std::min(key.find('.', begin), key.size());
    words.push_back(key.substr(begin, end - begin));
    begin = key.find_first_not_of('.', end);
  }
  return words;
}

void ReadEntry(const IniFile& ini, const std::string& key, SimulatedParts& parts) {
  const auto words = SplitAtDots(key);
  if (words.size() != 2) {
    return;
  }
  // Made before the word behind the dot is looked at: a misspelt one still forces the default.
  SimulatedPart& part = parts[std::string(words[0])];
  const std::int32_t value = ini.Number("Components", key, 0);
  if (words[1] == "MappedStatus") {
    part.mappedStatus = static_cast<std::uint8_t>(value);
  } else if (words[1] == "ObjectStatus") {
    part.objectStatus = value;
  } else if (words[1] == "IsCss") {
    part.isCss = value;
  }
}

}  // namespace

SimulationFile ReadSimulation(std::string_view text, SimulatedParts earlier) {
  const IniFile ini(text);
  SimulationFile file;
  file.parts = std::move(earlier);
  ReadEnd(ini, file);
  if (ini.Value("Info", "Filename") != kFileName || ini.Number("Config", "Active", 0) == 0) {
    return file;
  }
  file.active = true;
  for (const std::string& key : ini.Keys("Components")) {
    ReadEntry(ini, key, file.parts);
  }
  return file;
}

std::string WriteSimulation(const SimulatedParts& parts, std::optional<WallTime> until) {
  std::string text =
      "; Made by \"emhost simulate\": the module forces what [Components] says (-1: not simulated).\n";
  text += until ? "; emhost removes this file at " + LocalText(*until) + " local time.\n"
                : std::string("; Nothing ends this simulation by itself.\n");
  text += "; \"emhost simulate --clear\" ends it at once.\n\n[Info]\nFilename=";
  text += kFileName;
  text += "\n\n[Config]\nActive=1\n\n[Components]\n";
  for (const auto& [name, part] : parts) {
    text += name + ".MappedStatus=" + std::to_string(part.mappedStatus) + "\n";
    text += name + ".ObjectStatus=" + std::to_string(part.objectStatus) + "\n";
    text += name + ".IsCss=" + std::to_string(part.isCss) + "\n";
  }
  return text + "\n[Emhost]\nUntil=" + (until ? TimeToText(*until) : kForEver) + "\n";
}

}  // namespace emstatus::host
