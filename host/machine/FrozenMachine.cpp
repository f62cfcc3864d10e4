#include "host/machine/FrozenMachine.h"

#include <algorithm>

#include "host/machine/ReadingAnswer.h"

namespace emstatus::host {
namespace {

Reading MadeGood(Reading reading) {
  reading.quality = Quality::Good;
  reading.condition = Condition::Good;
  reading.reason.clear();
  if (reading.redundancy) {
    reading.redundancy->present = reading.redundancy->members;
  }
  return reading;
}

bool WorksWith(Fault fault) {
  return fault == Fault::Warning || fault == Fault::BeyondLimit;
}

/// The state against a limit of the configuration. What was read does not count, so that no value of this
/// moment shows in the answer.
Answer AgainstAnyLimit(const Request& request, bool beyond) {
  return request.data && request.data->is_number()
             ? Answer::Of(std::uint32_t(beyond ? RawState::Warning : RawState::Good))
             : Answer::Refusal(AnswerStatus::NotSupported);
}

}  // namespace

FrozenMachine::FrozenMachine(const Machine& source) : cabinets_(source.ExtensionCabinets()) {
  std::vector<std::uint32_t> all{0};
  all.insert(all.end(), cabinets_.begin(), cabinets_.end());
  for (const ClassRow& row : Classes()) {
    for (const std::uint32_t cabinet : all) {
      ObjectAddress address{row.objectClass, row.firstIndex, cabinet};
      for (; auto object = source.Find(address); ++address.index) {
        objects_.emplace(address, MadeGood(std::move(object->reading)));
      }
    }
  }
}

void FrozenMachine::Start(std::function<void()> changed) {
  changed_ = std::move(changed);
}

void FrozenMachine::Force(const ObjectAddress& object, Fault fault) {
  SetForced(std::pair(object, fault));
}

void FrozenMachine::Restore() {
  SetForced(std::nullopt);
}

void FrozenMachine::SetForced(Forced forced) {
  {
    const std::lock_guard guard(lock_);
    forced_ = forced;
  }
  changed_();
}

FrozenMachine::Forced FrozenMachine::NowForced() const {
  const std::lock_guard guard(lock_);
  return forced_;
}

std::vector<ObjectView> FrozenMachine::Objects() const {
  std::vector<ObjectView> objects;
  for (const auto& [address, reading] : objects_) {
    objects.push_back(View(address, reading));
  }
  return objects;
}

std::set<FrozenMachine::Asked> FrozenMachine::WasAsked() const {
  const std::lock_guard guard(lock_);
  return asked_;
}

void FrozenMachine::ForgetAsked() {
  const std::lock_guard guard(lock_);
  asked_.clear();
}

Answer FrozenMachine::Ask(const Request& request, std::chrono::milliseconds timeout) {
  const ClassRow* row = FindClass(request.code);
  const auto question = FindQuestion(request.extension);
  if (row == nullptr || !question || IsAboutClass(*question)) {
    return NumberedMachine::Ask(request, timeout);
  }
  const auto object = FindAsked(*row, request);
  if (!object) {
    return Answer::Refusal(AnswerStatus::NotFound);
  }
  std::optional<Fault> fault;
  {
    const std::lock_guard guard(lock_);
    asked_.emplace(object->address, *question);
    if (forced_ && forced_->first == object->address) {
      fault = forced_->second;
    }
  }
  if (fault == Fault::NoAnswer) {
    return Answer::Refusal(AnswerStatus::Failed);
  }
  const bool againstLimit = *question == Question::StateAbove || *question == Question::StateBelow;
  return againstLimit && object->reading.quality == Quality::Good
             ? AgainstAnyLimit(request, fault == Fault::BeyondLimit)
             : AnswerFromReading(*object, *question, request.data);
}

std::uint32_t FrozenMachine::Count(ObjectClass objectClass, std::uint32_t cabinet) const {
  return std::uint32_t(std::ranges::count_if(objects_, [&](const auto& entry) {
    return entry.first.objectClass == objectClass && entry.first.cabinet == cabinet;
  }));
}

std::optional<Fault> FrozenMachine::FaultInGroup(const Redundancy& group, const Forced& forced) const {
  const auto failing = forced ? objects_.find(forced->first) : objects_.end();
  const bool member = failing != objects_.end() && failing->second.redundancy &&
                      failing->second.redundancy->group == group.group;
  return member && !WorksWith(forced->second) ? std::optional(forced->second) : std::nullopt;
}

ObjectView FrozenMachine::View(const ObjectAddress& address, const Reading& good) const {
  const Forced forced = NowForced();
  ObjectView view{address, good, std::chrono::milliseconds(0)};
  if (forced && forced->first == address) {
    view.reading = WithFault(view.reading, forced->second);
  }
  if (view.reading.redundancy) {
    Redundancy& group = *view.reading.redundancy;
    const auto fault = FaultInGroup(group, forced);
    const bool tooFew = fault == Fault::FailedTooMany && group.needed > 0;
    const std::uint32_t missing = fault ? 1U : 0U;
    group.present = tooFew ? group.needed - 1 : group.present - std::min(group.present, missing);
  }
  return view;
}

std::optional<ObjectView> FrozenMachine::FindByIndex(const ObjectAddress& address) const {
  const auto found = objects_.find(address);
  return found == objects_.end() ? std::nullopt : std::optional(View(found->first, found->second));
}

std::optional<ObjectView> FrozenMachine::FindByName(ObjectClass objectClass, std::uint32_t cabinet,
                                                    const std::string& name) const {
  for (const auto& [address, reading] : objects_) {
    const bool same = address.objectClass == objectClass && address.cabinet == cabinet;
    if (same && (reading.name == name || reading.id == name)) {
      return View(address, reading);
    }
  }
  return std::nullopt;
}

Answer FrozenMachine::Confirm(ObjectClass, std::uint32_t, std::chrono::milliseconds) {
  return Answer::Refusal(AnswerStatus::Failed);
}

}  // namespace emstatus::host
