#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/providers/ReadLanes.h"

namespace emstatus::host {

/// What is known of a device: its last sample with the moment it was asked, and since when it owes an answer.
template <typename Sample>
struct DeviceAnswer {
  std::optional<Sample> sample;
  std::chrono::steady_clock::time_point takenAt{};
  std::optional<std::chrono::steady_clock::time_point> waitingSince;
};

/// Takes samples of several devices side by side (ReadLanes) and keeps the last one of each. A device that is
/// slow delivers its sample to a later Read, with the age that it then has. [worker of one provider]
template <typename Sample>
class DeviceReads {
 public:
  using Clock = std::chrono::steady_clock;
  /// Takes one sample; must own what it uses. Runs on a thread of its own.
  using Take = std::function<Sample(SystemFiles&)>;

  explicit DeviceReads(FilesFactory makeFiles, std::chrono::milliseconds patience = ReadLanes::kPatience)
      : lanes_(std::move(makeFiles), patience) {}

  /// Asks each device that owes no answer, in order of the keys, and tells what is known of all of them
  /// afterwards. Devices that are not named any more are forgotten.
  const std::map<std::string, DeviceAnswer<Sample>>& Read(const std::map<std::string, Take>& devices,
                                                          Clock::time_point now) {
    std::erase_if(slots_, [&](const auto& entry) { return !devices.contains(entry.first); });
    std::erase_if(answers_, [&](const auto& entry) { return !devices.contains(entry.first); });
    std::vector<std::pair<std::string, ReadLanes::Job>> jobs;
    for (const auto& [key, take] : devices) {
      DeviceAnswer<Sample>& answer = answers_[key];
      if (!lanes_.IsRunning(key)) {
        Collect(key);
        jobs.emplace_back(key, JobFor(key, take, now));
      }
      answer.waitingSince = answer.waitingSince.value_or(now);
    }
    lanes_.Run(std::move(jobs));
    for (const auto& [key, take] : devices) {
      Collect(key);
    }
    return answers_;
  }

  /// What is known by now of the devices of the last Read; asks nothing.
  const std::map<std::string, DeviceAnswer<Sample>>& Collected() {
    for (const auto& [key, slot] : slots_) {
      Collect(key);
    }
    return answers_;
  }

 private:
  struct Slot {
    Clock::time_point askedAt{};
    std::mutex lock;
    std::optional<Sample> sample;
  };

  ReadLanes::Job JobFor(const std::string& key, const Take& take, Clock::time_point now) {
    auto slot = std::make_shared<Slot>();
    slot->askedAt = now;
    slots_[key] = slot;
    return [slot, take](SystemFiles& files) {
      Sample sample = take(files);
      const std::lock_guard lock(slot->lock);
      slot->sample = std::move(sample);
    };
  }

  void Collect(const std::string& key) {
    const auto slot = slots_.find(key);
    if (slot == slots_.end()) {
      return;
    }
    const std::lock_guard lock(slot->second->lock);
    if (slot->second->sample) {
      answers_[key] = {std::move(slot->second->sample), slot->second->askedAt, std::nullopt};
      slot->second->sample.reset();
    }
  }

  ReadLanes lanes_;
  std::map<std::string, std::shared_ptr<Slot>> slots_;
  std::map<std::string, DeviceAnswer<Sample>> answers_;
};

}  // namespace emstatus::host
