#include "host/recording/RecordedMachine.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "host/view/ReportReader.h"

namespace emstatus::host {

void RecordedMachine::Advance(const RecordedScan& scan) {
  const std::lock_guard guard(lock_);
  scan_ = scan.number;
  for (const RecordedAnswer& entry : scan.answers) {
    auto& answers = known_[RequestKey(entry.request)].answers;
    // One that the recording leaves out is not known to be another.
    const std::size_t place = std::min<std::size_t>(entry.occurrence, answers.size());
    if (place == answers.size()) {
      answers.push_back(entry.answer);
    } else {
      answers[place] = entry.answer;
    }
  }
  for (const RecordedObject& entry : scan.objects) {
    journal_.Apply(entry);
    const nlohmann::json* members = journal_.Find(entry.address);
    if (members == nullptr) {
      objects_.erase(entry.address);
      continue;
    }
    try {
      ObjectView& object = objects_[entry.address];
      object = ReadObjectJson(*members);
      object.address = entry.address;
    } catch (const std::runtime_error& error) {
      throw std::runtime_error("the recording's scan " + std::to_string(scan.number) + ": " + error.what());
    }
  }
}

std::vector<Request> RecordedMachine::TakeUnanswered() {
  const std::lock_guard guard(lock_);
  return std::exchange(unanswered_, {});
}

std::uint64_t RecordedMachine::Asked() const {
  const std::lock_guard guard(lock_);
  return asked_;
}

Answer RecordedMachine::Ask(const Request& request, std::chrono::milliseconds) {
  const std::lock_guard guard(lock_);
  ++asked_;
  const auto found = known_.find(RequestKey(request));
  if (found == known_.end()) {
    unanswered_.push_back(request);
    return Answer::Refusal(AnswerStatus::Failed);
  }
  Known& known = found->second;
  if (known.scan != scan_) {
    known.scan = scan_;
    known.asked = 0;
  }
  const std::size_t occurrence = std::min<std::size_t>(known.asked++, known.answers.size() - 1);
  return known.answers[occurrence];
}

std::optional<ObjectView> RecordedMachine::Find(const ObjectAddress& address) const {
  const std::lock_guard guard(lock_);
  const auto found = objects_.find(address);
  return found == objects_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace emstatus::host
