#include "host/machine/NumberedMachine.h"

#include "host/machine/ReadingAnswer.h"

namespace emstatus::host {
namespace {

bool IsNamed(std::uint32_t object) {
  return object >= kFirstNamedObject && object <= kLastNamedObject;
}

}  // namespace

Answer NumberedMachine::Ask(const Request& request, std::chrono::milliseconds timeout) {
  const ClassRow* row = FindClass(request.code);
  const auto question = FindQuestion(request.extension);
  if (row == nullptr || !question) {
    return Answer::Refusal(AnswerStatus::NotSupported);
  }
  if (IsAboutClass(*question)) {
    return AskClass(*row, *question, request, timeout);
  }
  const auto object = FindAsked(*row, request);
  return object ? AnswerFromReading(*object, *question, request.data)
                : Answer::Refusal(AnswerStatus::NotFound);
}

Answer NumberedMachine::AskClass(const ClassRow& row, Question question, const Request& request,
                                 std::chrono::milliseconds timeout) {
  switch (question) {
    case Question::Count:
      return Answer::Of(Count(row.objectClass, request.cabinet));
    case Question::ClassName:
      return Answer::Of(row.title);
    default:
      return Confirm(row.objectClass, request.cabinet, timeout);
  }
}

std::optional<ObjectView> NumberedMachine::FindAsked(const ClassRow& row, const Request& request) {
  const ObjectAddress address{row.objectClass, request.object, request.cabinet};
  if (IsNamed(request.object) && request.data && request.data->is_string()) {
    const std::lock_guard guard(namesLock_);
    names_[address] = request.data->get<std::string>();
  }
  return Find(address);
}

std::optional<ObjectView> NumberedMachine::Find(const ObjectAddress& address) const {
  if (!IsNamed(address.index)) {
    return FindByIndex(address);
  }
  std::string name;
  {
    const std::lock_guard guard(namesLock_);
    const auto found = names_.find(address);
    if (found == names_.end()) {
      return std::nullopt;
    }
    name = found->second;
  }
  return FindByName(address.objectClass, address.cabinet, name);
}

}  // namespace emstatus::host
