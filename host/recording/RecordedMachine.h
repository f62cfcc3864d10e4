#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "host/machine/Machine.h"
#include "host/recording/ObjectJournal.h"
#include "host/recording/RecordedScan.h"
#include "host/recording/RequestKey.h"

namespace emstatus::host {

/// Answers requests as a recording has them: in each scan the first request of a kind gets what was answered
/// first, the next one what was answered next, in whatever order kinds come. A request that was not made in
/// this scan, but in one before, gets the last answer; one that was never made fails.
class RecordedMachine final : public Machine {
 public:
  explicit RecordedMachine(std::vector<std::uint32_t> extensionCabinets)
      : cabinets_(std::move(extensionCabinets)) {}

  /// Goes on to the next scan. Throws a std::runtime_error when what it says of an object cannot be. [main
  /// thread, while the module is held]
  void Advance(const RecordedScan& scan);

  /// The requests of this scan that the recording had no answer to. [main thread]
  std::vector<Request> TakeUnanswered();
  /// How many requests were made in all. [any thread]
  std::uint64_t Asked() const;

  std::vector<std::uint32_t> ExtensionCabinets() const override { return cabinets_; }
  void Start(std::function<void()>) override {}
  bool WaitUntilRead(std::chrono::milliseconds) override { return true; }
  Answer Ask(const Request& request, std::chrono::milliseconds timeout) override;
  std::optional<ObjectView> Find(const ObjectAddress& address) const override;
  void Refresh() override {}
  void OnScanBegin() override {}
  void Stop() override {}

 private:
  struct Known {
    std::vector<Answer> answers;
    std::uint32_t asked = 0;
    std::uint64_t scan = 0;
  };

  const std::vector<std::uint32_t> cabinets_;
  mutable std::mutex lock_;
  // Guarded by lock_
  std::map<RequestKey, Known> known_;
  std::vector<Request> unanswered_;
  ObjectJournal journal_;
  std::map<ObjectAddress, ObjectView> objects_;
  std::uint64_t scan_ = 0;
  std::uint64_t asked_ = 0;
};

}  // namespace emstatus::host
