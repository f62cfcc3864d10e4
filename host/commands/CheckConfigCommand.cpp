#include "host/commands/CheckConfigCommand.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/commands/BudgetMeasurement.h"
#include "host/commands/DefaultPaths.h"
#include "host/commands/MeasurementText.h"
#include "host/configcheck/BudgetText.h"
#include "host/configcheck/Checks.h"
#include "host/configcheck/ProblemText.h"
#include "host/machine/Utf8.h"

namespace emstatus::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSimulationBeside = "EM_STATUS_simu.ini";

/// Exit code for errors and warnings.
constexpr int kHasProblems = 1;
/// The time was over first.
constexpr int kNotMeasured = 3;

struct CheckConfigOptions {
  /// A file or a folder; empty: the folder that "run" takes.
  std::string file;
  bool json = false;
  bool measure = false;
  /// Seconds.
  int limit = 600;
  std::string module;
};

/// What the command works on. The simulation is the one that a module with this configuration would see.
struct ConfigurationFiles {
  fs::path configuration;
  fs::path simulation;
};

ConfigurationFiles FilesOf(const std::string& wanted) {
  fs::path path = wanted.empty() ? fs::path(FindConfiguration({}, ConfigurationCandidates(ProgramFolder())))
                                 : fs::path(wanted);
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) {
    path /= Configuration::kFileName;
  }
  return {path, path.parent_path() / kSimulationBeside};
}

class CheckConfig {
 public:
  explicit CheckConfig(CheckConfigOptions options)
      : options_(std::move(options)), files_(FilesOf(options_.file)) {}

  int Run() {
    const std::string text = ReadFileText(files_.configuration.string());
    const IniFile ini(text);
    const Configuration configuration = ReadConfiguration(ini);
    untilJudged_ = UntilSilenceIsJudged(configuration);
    problems_ = CheckConfiguration(ini, configuration, files_.configuration.filename().string());
    std::error_code ignored;
    if (fs::exists(files_.simulation, ignored)) {
      const auto more =
          CheckSimulation(ReadFileText(files_.simulation.string()), configuration, text, kSimulationBeside);
      problems_.insert(problems_.end(), more.begin(), more.end());
    }
    budgets_ = DetectionBudgets(configuration);
    if (!options_.json) {
      Print();
    }
    if (options_.measure) {
      Measure(configuration);
    }
    if (options_.json) {
      std::cout << Json().dump(2) << std::endl;
    }
    return ExitCode();
  }

 private:
  void Measure(const Configuration& configuration) {
    if (files_.configuration.filename() != Configuration::kFileName) {
      throw std::runtime_error(
          "to measure, the file must be called EM_STATUS.ini, as the module looks for it.");
    }
    const std::string folder = fs::absolute(files_.configuration).parent_path().string();
    measured_ =
        BudgetMeasurement(options_.module, folder, configuration, std::chrono::seconds(options_.limit)).Run();
    if (!options_.json) {
      std::cout << "\nMeasured, from the moment at which emhost knows of it:\n\n"
                << MeasurementText(measured_) << std::flush;
    }
  }

  int ExitCode() const {
    const bool isClean = std::ranges::all_of(
        problems_, [](const Problem& problem) { return problem.severity == Severity::Note; });
    const bool isWithin = std::ranges::none_of(measured_, &MeasuredTime::IsOver);
    if (!isClean || !isWithin) {
      return kHasProblems;
    }
    return std::ranges::any_of(measured_, &MeasuredTime::isOutOfTime) ? kNotMeasured : 0;
  }

  void Print() const {
    for (const Problem& problem : problems_) {
      const bool isSimulation = problem.place.file == kSimulationBeside;
      const fs::path& file = isSimulation ? files_.simulation : files_.configuration;
      std::cout << TextOf(problem, file.string()) << '\n';
    }
    std::cout << files_.configuration.string() << ": " << Summary(problems_) << '\n';
    if (!budgets_.empty()) {
      std::cout
          << "\nThe longest time until it shows when a part fails, is no longer answered for, or fails in a\n"
             "component that had none:\n\n"
          << BudgetText(budgets_)
          << "\nA mandatory component that does not answer from the start on: " << DurationText(untilJudged_)
          << std::endl;
    }
  }

  nlohmann::ordered_json Json() const {
    nlohmann::ordered_json json = {{"File", CleanUtf8(files_.configuration.string())},
                                   {"Problems", ProblemsJson(problems_)},
                                   {"Budget", BudgetJson(budgets_)},
                                   {"SilentFromStartSeconds", SecondsJson(untilJudged_)}};
    if (options_.measure) {
      json["Measured"] = MeasurementJson(measured_);
    }
    return json;
  }

  CheckConfigOptions options_;
  ConfigurationFiles files_;
  std::vector<Problem> problems_;
  std::vector<DetectionBudget> budgets_;
  DetectionBudget::Duration untilJudged_{0};
  std::vector<MeasuredTime> measured_;
};

}  // namespace

std::function<int()> SetUpCheckConfigCommand(CLI::App& command) {
  const auto options = std::make_shared<CheckConfigOptions>();
  command
      .add_option("FILE", options->file,
                  "An EM_STATUS.ini, or its folder (default: the one that run would take)")
      ->type_name("");
  command.add_flag("--json", options->json, "For programs");
  command.add_flag(
      "--measure", options->measure,
      "Run the module on a machine that fails part by part, and compare with the times that are told");
  command.add_option("--limit", options->limit, "How long --measure may take")
      ->check(CLI::Range(1, 86400).description(""))
      ->type_name("SECONDS")
      ->capture_default_str();
  command.add_option("--module", options->module, "The module's library, for --measure")->type_name("PATH");
  command.footer(
      "Exit codes: 0 no problems, or notes only; 1 errors or warnings, or a time is over; 3 the file cannot be\n"
      "read, or not measured.\n"
      "Examples:\n"
      "  emhost check-config\n"
      "  emhost check-config /etc/em_status\n"
      "  emhost check-config --json ./EM_STATUS.ini\n"
      "  emhost check-config --measure --limit 120");
  return [options] { return CheckConfig(*options).Run(); };
}

}  // namespace emstatus::host
