#include "host/commands/BudgetMeasurement.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "host/commands/RunningHost.h"
#include "host/simulation/SimulationFile.h"

namespace emstatus::host {
namespace {

constexpr std::uint32_t kStatusOfGoodParts = 1;
/// A failure that has not shown after so many times what is allowed is not waited for any longer.
constexpr int kPatience = 3;
constexpr std::chrono::seconds kMorePatience{5};
constexpr std::uint32_t kMostScansAtFirst = 2000;
constexpr std::chrono::seconds kLongestToRestore{10};

void RefuseSimulation() {
  std::error_code ignored;
  if (std::filesystem::exists("EM_STATUS_simu.ini", ignored) &&
      ReadSimulation(ReadFileText("EM_STATUS_simu.ini")).active) {
    throw std::runtime_error(
        "a simulation is in force beside the configuration, which would be measured instead; end it with "
        "emhost simulate --clear.");
  }
}

}  // namespace

BudgetMeasurement::BudgetMeasurement(const std::string& module, const std::string& folder,
                                     Configuration configuration, std::chrono::seconds limit)
    : configuration_(std::move(configuration)), deadline_(Clock::now() + limit) {
  const std::string library = AbsoluteModule(module);
  std::filesystem::current_path(folder);
  RefuseSimulation();
  Prepare();
  machine_ = std::make_unique<ProviderMachine>(MakeTrialProviders(parts_));
  host_ = std::make_unique<Host>(*machine_, *notices_, Host::ScanObserver{});
  library_ = std::make_unique<ModuleLibrary>(library);
  machine_->Start([notices = notices_] { notices->Push(Notice{}); });
  session_ = std::make_unique<ModuleSession>(library_->Module(), *host_, *machine_);
  static_cast<void>(machine_->WaitUntilRead(kLongestToRestore));
  session_->Run();
}

BudgetMeasurement::~BudgetMeasurement() {
  session_.reset();
  library_.reset();
}

void BudgetMeasurement::Prepare() {
  const auto budgets = DetectionBudgets(configuration_);
  for (std::uint32_t i = 0; i < configuration_.subsystems.size(); ++i) {
    const auto& names = configuration_.subsystems[i].components;
    for (std::uint32_t k = 0; k < names.size(); ++k) {
      Tried tried{names[k], i, k, false, std::nullopt, {}};
      if (std::ranges::find(tried_, tried.component, &Tried::component) != tried_.end()) {
        continue;
      }
      const auto budget = std::ranges::find(budgets, tried.component, &DetectionBudget::component);
      tried.isTold = budget->isTold;
      if (budget->inModule) {
        tried.trial = MakeTrial(configuration_.components.at(tried.component), tried.why);
      } else {
        tried.why = "emhost does not answer it";
      }
      if (tried.trial) {
        parts_->Add(*tried.trial);
      }
      tried_.push_back(std::move(tried));
    }
  }
}

bool BudgetMeasurement::WaitForScan(Clock::time_point deadline) {
  bool ended = false;
  while (!ended) {
    const auto rest =
        std::chrono::ceil<std::chrono::milliseconds>(std::min(deadline, deadline_) - Clock::now());
    if (rest.count() <= 0) {
      return false;
    }
    std::array<pollfd, 2> descriptors{
        {{notices_->Descriptor(), POLLIN, 0}, {signals_.Descriptor(), POLLIN, 0}}};
    poll(descriptors.data(), descriptors.size(),
         static_cast<int>(std::min<std::int64_t>(rest.count(), 60000)));
    if (descriptors[1].revents != 0) {
      throw std::runtime_error("stopped before everything was measured.");
    }
    for (const Notice& notice : notices_->Take()) {
      if (notice.kind == Notice::Kind::Changed) {
        session_->WakeUp();
      }
      ended = ended || notice.kind == Notice::Kind::ScanEnd;
    }
  }
  return true;
}

bool BudgetMeasurement::ScanNow() {
  session_->WakeUp();
  return WaitForScan(Clock::now() + kLongestToRestore);
}

/// Later scans come at their regular pace, and everything that answers is active.
void BudgetMeasurement::GoThroughProbing() {
  const auto cycles = static_cast<std::uint32_t>(configuration_.advancedPollingCycles);
  const std::uint32_t scans = std::min(std::max(cycles, 1U), kMostScansAtFirst) + 1;
  for (std::uint32_t i = 0; i < scans && HasTime(); ++i) {
    ScanNow();
  }
}

std::uint32_t BudgetMeasurement::StatusOf(const Tried& tried) {
  return session_->ComponentStatus(tried.subsystem, tried.position).value_or(0);
}

bool BudgetMeasurement::IsGood(const Tried& tried) {
  return StatusOf(tried) == kStatusOfGoodParts;
}

std::vector<MeasuredTime> BudgetMeasurement::Run() {
  GoThroughProbing();
  std::vector<MeasuredTime> times;
  for (const Tried& tried : tried_) {
    times.push_back(Fail(tried));
    Restore(tried);
  }
  const auto silences = FallSilent();
  times.insert(times.end(), silences.begin(), silences.end());
  return times;
}

void BudgetMeasurement::GiveUp(MeasuredTime& time) {
  time.why = "the time that --limit gives is over";
  time.isOutOfTime = true;
}

MeasuredTime BudgetMeasurement::Fail(const Tried& tried) {
  MeasuredTime time{.component = tried.component, .taken = {}, .why = tried.why};
  if (!tried.trial) {
    return time;
  }
  const auto budgets = DetectionBudgets(configuration_);
  time.allowed = *std::ranges::find(budgets, tried.component, &DetectionBudget::component)->inModule;
  // The worst moment: the module has just asked, and its pause begins.
  if (!HasTime() || !ScanNow()) {
    GiveUp(time);
    return time;
  }
  if (!IsGood(tried)) {
    time.why = "it is not good while all its parts are";
    return time;
  }
  parts_->Fail(*tried.trial);
  const auto begin = Clock::now();
  machine_->Refresh();
  const auto end = begin + time.allowed * kPatience + kMorePatience;
  while (WaitForScan(end)) {
    if (!IsGood(tried)) {
      time.taken = std::chrono::ceil<MeasuredTime::Duration>(Clock::now() - begin);
      return time;
    }
  }
  if (!HasTime()) {
    GiveUp(time);
  }
  return time;
}

void BudgetMeasurement::Restore(const Tried& tried) {
  if (!tried.trial || !HasTime()) {
    return;
  }
  parts_->Restore();
  machine_->Refresh();
  const auto end = Clock::now() + kLongestToRestore;
  while (Clock::now() < end && ScanNow() && !IsGood(tried)) {
  }
}

/// One silence for all of them: nothing tells the module of it, so that they wait for the same scan.
std::vector<MeasuredTime> BudgetMeasurement::FallSilent() {
  std::vector<MeasuredTime> times;
  std::vector<const Tried*> waiting;
  const bool begins = HasTime() && ScanNow();
  for (const Tried& tried : tried_) {
    if (!tried.trial || !tried.trial->showsSilence) {
      continue;
    }
    MeasuredTime time{.component = tried.component,
                      .isSilence = true,
                      .allowed = UntilRegularScan(configuration_),
                      .taken = {},
                      .why = {}};
    if (!begins) {
      GiveUp(time);
    } else if (!IsGood(tried)) {
      time.why = "it is not good while all its parts are";
    }
    waiting.push_back(&tried);
    times.push_back(std::move(time));
  }
  parts_->Silence();
  const auto begin = Clock::now();
  machine_->Refresh();
  const auto end = begin + UntilRegularScan(configuration_) * kPatience + kMorePatience;
  const auto isOpen = [](const MeasuredTime& time) { return time.why.empty() && !time.taken; };
  while (std::ranges::any_of(times, isOpen) && WaitForScan(end)) {
    for (std::size_t i = 0; i < times.size(); ++i) {
      if (isOpen(times[i]) && !IsGood(*waiting[i])) {
        times[i].taken = std::chrono::ceil<MeasuredTime::Duration>(Clock::now() - begin);
      }
    }
  }
  for (MeasuredTime& time : times) {
    if (isOpen(time) && !HasTime()) {
      GiveUp(time);
    }
  }
  return times;
}

}  // namespace emstatus::host
