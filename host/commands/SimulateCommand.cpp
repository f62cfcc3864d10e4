#include "host/commands/SimulateCommand.h"

#include <chrono>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/commands/DefaultPaths.h"
#include "host/simulation/SimulateArguments.h"
#include "host/simulation/SimulationFile.h"
#include "host/simulation/SimulationFolder.h"
#include "host/simulation/SimulationNames.h"
#include "host/simulation/SimulationTracker.h"
#include "host/view/SimulationText.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {
namespace {

struct SimulateOptions {
  std::vector<std::string> settings;
  std::string duration = "10m";
  bool clear = false;
  std::string configuration;
};

WallTime NextSecond() {
  return std::chrono::ceil<std::chrono::seconds>(std::chrono::system_clock::now());
}

std::string ReadConfiguration(const std::string& folder) {
  const std::string path = folder + "/EM_STATUS.ini";
  std::ifstream stream(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (text.empty()) {
    throw std::runtime_error("cannot read " + path + ", which says what can be simulated.");
  }
  return text;
}

SimulationState StateOf(const SimulationFile& file) {
  SimulationState state;
  state.parts = file.parts;
  state.byHand = file.byHand;
  state.until = file.until;
  return state;
}

class Simulate {
 public:
  explicit Simulate(const SimulateOptions& options)
      : options_(options),
        configuration_(FindConfiguration(options.configuration, ConfigurationCandidates(ProgramFolder()))),
        folder_(configuration_),
        text_(ReadConfiguration(configuration_)),
        words_(text_) {}

  void Begin() const;
  void End() const;
  void Show() const;

 private:
  void KeepHandwork(const std::string& text, const SimulationFile& file) const;
  void TellReplaced(const SimulationFile& before, const SimulatedParts& parts) const;
  void Advise(const SimulatedParts& parts, const SimulationNames& names) const;

  const SimulateOptions& options_;
  const std::string configuration_;
  const SimulationFolder folder_;
  const std::string text_;
  const StatusWords words_;
};

void Simulate::KeepHandwork(const std::string& text, const SimulationFile& file) const {
  if (file.byHand) {
    folder_.SetAside(text);
    std::cout << "The file written by hand is kept as " << folder_.SavedPath() << ".\n";
  }
}

void Simulate::TellReplaced(const SimulationFile& before, const SimulatedParts& parts) const {
  if (!before.active) {
    return;
  }
  std::cout << "This replaces what was simulated " << EndText(StateOf(before)) << ": "
            << PartsText(StateOf(before), words_) << ".\n";
  SimulationState dropped = StateOf(before);
  std::erase_if(dropped.parts, [&](const auto& entry) { return parts.contains(entry.first); });
  if (dropped.InForce()) {
    std::cout << "A module that runs now keeps, until this ends: " << PartsText(dropped, words_) << ".\n";
  }
}

void Simulate::Advise(const SimulatedParts& parts, const SimulationNames& names) const {
  for (const auto& [name, part] : parts) {
    const bool statusGiven = part.mappedStatus != 0 || part.objectStatus != SimulatedPart::kNotSimulated;
    if (part.isCss != SimulatedPart::kNotSimulated && !statusGiven) {
      std::cout << "Note: a simulated part has a simulated status, too, and that of " << name << " is "
                << words_.Of(0) << " now. Give it with " << name << "=STATUS.\n";
    }
    if (const std::string advice = names.Advice(name); !advice.empty()) {
      std::cout << "Note: " << advice << "\n";
    }
  }
}

void Simulate::Begin() const {
  const SimulationNames names(text_);
  const SimulatedParts parts = ParseSettings(options_.settings, names);
  const auto duration = ParseDuration(options_.duration);
  const auto until = duration ? std::optional(NextSecond() + *duration) : std::nullopt;
  const auto textBefore = folder_.Read();
  const SimulationFile before = ReadSimulation(textBefore.value_or(""));
  if (textBefore) {
    KeepHandwork(*textBefore, before);
  }
  const std::string text = WriteSimulation(parts, until);
  folder_.Replace(text);
  std::cout << BannerText(StateOf(ReadSimulation(text)), words_) << "\n";
  if (textBefore && !before.IsOver(NextSecond())) {
    TellReplaced(before, parts);
  }
  Advise(parts, names);
}

void Simulate::End() const {
  const auto text = folder_.Read();
  if (!text) {
    std::cout << "Nothing was simulated.\n";
    return;
  }
  const SimulationFile file = ReadSimulation(*text);
  KeepHandwork(*text, file);
  static_cast<void>(folder_.Remove());
  if (file.active) {
    std::cout << "No longer simulated: " << PartsText(StateOf(file), words_) << "\n";
  } else {
    std::cout << "Nothing was simulated; " << folder_.Path() << " is removed.\n";
  }
}

void Simulate::Show() const {
  const auto text = folder_.Read();
  const SimulationFile file = ReadSimulation(text.value_or(""));
  if (!text) {
    std::cout << "Nothing is simulated.\n";
  } else if (!file.active) {
    std::cout << "Nothing is simulated: " << folder_.Path()
              << " is not switched on, or no simulation file.\n";
  } else {
    std::cout << BannerText(StateOf(file), words_) << "\n";
    if (file.IsOver(NextSecond())) {
      std::cout << "That is over. Its file is removed by emhost, also when it starts, or by --clear.\n";
    }
  }
}

}  // namespace

std::function<int()> SetUpSimulateCommand(CLI::App& command) {
  const auto options = std::make_shared<SimulateOptions>();
  auto* settings = command
                       .add_option("settings", options->settings,
                                   "What to simulate: NAME=STATUS with a status word or number, "
                                   "NAME.ObjectStatus=N, NAME.IsCss=0|1. NAME is a component, or an "
                                   "instance: Fan0. Without any, shows what is simulated")
                       ->type_name("NAME=STATUS");
  auto* duration = command.add_option("--for", options->duration, "How long: 90s, 10m, 2h, or ever")
                       ->type_name("TIME")
                       ->capture_default_str()
                       ->needs(settings);
  command.add_flag("--clear", options->clear, "End the simulation now")
      ->excludes(settings)
      ->excludes(duration);
  command
      .add_option("--config", options->configuration,
                  "The folder of EM_STATUS.ini (default: etc beside emhost)")
      ->type_name("DIR");
  command.footer(
      "Examples:\n"
      "  emhost simulate Fan0=Error --for 10m     as if Fan0 had failed\n"
      "  emhost simulate                          what is simulated\n"
      "  emhost simulate --clear                  the end of it\n"
      "A module that runs takes it up at once when emhost runs it, otherwise with its next scan.\n"
      "Exit code: 0 done, 3 refused or failed.");
  return [options] {
    const Simulate simulate(*options);
    if (options->clear) {
      simulate.End();
    } else if (options->settings.empty()) {
      simulate.Show();
    } else {
      simulate.Begin();
    }
    std::cout << std::flush;
    return 0;
  };
}

}  // namespace emstatus::host
