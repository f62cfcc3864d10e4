#include "host/configcheck/TrialParts.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace emstatus::host {
namespace {

constexpr std::chrono::hours kNeverRead{1000};
constexpr std::chrono::milliseconds kLateAtOnce{1};

class TrialProvider final : public Provider {
 public:
  TrialProvider(std::string_view name, std::shared_ptr<TrialParts> parts, bool isSource)
      : name_(name), parts_(std::move(parts)), isSource_(isSource) {}

  std::string_view Name() const override { return name_; }
  std::chrono::milliseconds Interval() const override { return kNeverRead; }
  std::vector<Reading> Read(const ReadContext&) override {
    if (!isSource_) {
      return parts_->Read();
    }
    parts_->ReadSource();
    return {};
  }

 private:
  const std::string_view name_;
  const std::shared_ptr<TrialParts> parts_;
  const bool isSource_;
};

}  // namespace

TrialParts::Key TrialParts::KeyOf(const Trial& trial) {
  return {trial.objectClass, trial.name.empty() ? "part " + std::to_string(trial.position) : trial.name};
}

void TrialParts::Add(const Trial& trial) {
  if (trial.objectClass == ObjectClass::HealthSource) {
    return;
  }
  const std::lock_guard guard(lock_);
  const std::size_t first = trial.name.empty() ? 0 : trial.position;
  Trial each = trial;
  for (each.position = first; each.position <= trial.position; ++each.position) {
    const Key key = KeyOf(each);
    auto found = std::ranges::find(parts_, key, &std::pair<Key, Reading>::first);
    if (found == parts_.end()) {
      found = parts_.insert(found, {key, each.good});
      found->second.id = key.second;
      found->second.name = key.second;
    }
    if (each.position == trial.position && trial.good.measurement) {
      found->second.measurement = trial.good.measurement;
    }
  }
}

void TrialParts::Fail(const Trial& trial) {
  const std::lock_guard guard(lock_);
  failing_ = {KeyOf(trial), trial.bad};
  silent_ = false;
}

void TrialParts::Silence() {
  const std::lock_guard guard(lock_);
  failing_.reset();
  silent_ = true;
}

void TrialParts::Restore() {
  const std::lock_guard guard(lock_);
  failing_.reset();
  silent_ = false;
}

std::vector<Reading> TrialParts::Read() const {
  const std::lock_guard guard(lock_);
  std::vector<Reading> readings;
  for (const auto& [key, good] : parts_) {
    Reading& reading = readings.emplace_back(good);
    if (failing_ && failing_->first == key) {
      reading = failing_->second;
      reading.id = good.id;
      reading.name = good.name;
    }
    reading.lateAfter = silent_ ? kLateAtOnce : kNeverRead;
  }
  return readings;
}

void TrialParts::ReadSource() const {
  const std::lock_guard guard(lock_);
  if (failing_ && failing_->first.first == ObjectClass::HealthSource) {
    throw std::runtime_error("tried out");
  }
}

std::vector<std::unique_ptr<Provider>> MakeTrialProviders(const std::shared_ptr<TrialParts>& parts) {
  std::vector<std::unique_ptr<Provider>> providers;
  providers.push_back(std::make_unique<TrialProvider>("tried source", parts, true));
  providers.push_back(std::make_unique<TrialProvider>("tried parts", parts, false));
  return providers;
}

}  // namespace emstatus::host
