#include "host/commands/CheckConfigCommand.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "host/commands/DefaultPaths.h"
#include "host/configcheck/BudgetText.h"
#include "host/configcheck/Checks.h"
#include "host/configcheck/ProblemText.h"

namespace emstatus::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSimulationBeside = "EM_STATUS_simu.ini";

/// Exit code for errors and warnings.
constexpr int kHasProblems = 1;

struct CheckConfigOptions {
  /// A file or a folder; empty: the folder that "run" takes.
  std::string file;
  bool json = false;
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
    if (options_.json) {
      std::cout << Json().dump(2) << '\n';
    } else {
      Print();
    }
    const bool isClean = std::ranges::all_of(
        problems_, [](const Problem& problem) { return problem.severity == Severity::Note; });
    return isClean ? 0 : kHasProblems;
  }

 private:
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
          << '\n';
    }
  }

  nlohmann::ordered_json Json() const {
    return {{"File", files_.configuration.string()},
            {"Problems", ProblemsJson(problems_)},
            {"Budget", BudgetJson(budgets_)},
            {"SilentFromStartSeconds", SecondsJson(untilJudged_)}};
  }

  CheckConfigOptions options_;
  ConfigurationFiles files_;
  std::vector<Problem> problems_;
  std::vector<DetectionBudget> budgets_;
  DetectionBudget::Duration untilJudged_{0};
};

}  // namespace

std::function<int()> SetUpCheckConfigCommand(CLI::App& command) {
  const auto options = std::make_shared<CheckConfigOptions>();
  command
      .add_option("FILE", options->file,
                  "An EM_STATUS.ini, or its folder (default: the one that run would take)")
      ->type_name("");
  command.add_flag("--json", options->json, "For programs");
  command.footer(
      "Exit codes: 0 no problems, or notes only; 1 errors or warnings; 3 the file cannot be read.\n"
      "Examples:\n"
      "  emhost check-config\n"
      "  emhost check-config /etc/em_status\n"
      "  emhost check-config --json ./EM_STATUS.ini");
  return [options] { return CheckConfig(*options).Run(); };
}

}  // namespace emstatus::host
