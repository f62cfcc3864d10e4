#include "host/module/Host.h"

#include <exception>

#include "host/module/CommandReader.h"
#include "host/module/HostCodes.h"

namespace emstatus::host {
namespace {

constexpr std::uint32_t kSignalCount = 1;
constexpr std::uint32_t kPurposeErrorLed = 1;

/// A command that nobody waits for is not waited for here either.
constexpr std::chrono::milliseconds kNoWait{0};

}  // namespace

void Host::SendCommand(CIExtensionModule*, HostCommand& command, std::uint32_t) {
  static_cast<void>(SendRequest(nullptr, command, std::uint32_t(kNoWait.count())));
}

bool Host::SendRequest(CIExtensionModule*, HostCommand& command, std::uint32_t timeoutMs) {
  Answer answer = Answer::Refusal(AnswerStatus::Failed);
  try {
    if (!closed_) {
      answer = Dispatch(ReadRequest(command), std::chrono::milliseconds(timeoutMs));
    }
    return WriteAnswer(command, answer) && answer.status == std::uint32_t(AnswerStatus::Success);
  } catch (const std::exception&) {
    // Nothing may unwind into the module; an unanswered command reads as failed there.
    return false;
  }
}

Answer Host::Dispatch(const Request& request, std::chrono::milliseconds timeout) {
  switch (ScanCommand(request.code)) {
    case ScanCommand::SignalCount:
      // The first step of each scan.
      machine_.OnScanBegin();
      scans_.begins();
      if (traffic_ != nullptr) {
        traffic_->OnScanBegin();
      }
      return Answer::Of(kSignalCount);
    case ScanCommand::SignalPurpose:
      return request.object == kErrorLed ? Answer::Of(kPurposeErrorLed)
                                         : Answer::Refusal(AnswerStatus::NotFound);
    case ScanCommand::SetSignal:
      return SetSignal(request);
    case ScanCommand::RefreshRaid:
      machine_.Refresh();
      return {};
  }
  return AskMachine(request, timeout);
}

Answer Host::AskMachine(const Request& request, std::chrono::milliseconds timeout) {
  using Clock = std::chrono::steady_clock;
  const auto begin = traffic_ == nullptr ? Clock::time_point() : Clock::now();
  Answer answer = machine_.Ask(request, timeout);
  if (traffic_ != nullptr) {
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    traffic_->OnAnswer(request, answer, took);
  }
  return answer;
}

/// The module sets the LED as the last step of each scan, so this is also how the host sees a scan end.
Answer Host::SetSignal(const Request& request) {
  const auto value = NumberOf(request.data);
  if (request.object != kErrorLed || !value) {
    return Answer::Refusal(AnswerStatus::NotFound);
  }
  scans_.ends();
  Notice notice;
  notice.kind = Notice::Kind::ScanEnd;
  notice.led = *value & 0xFF;
  if (traffic_ != nullptr) {
    traffic_->OnScanEnd(notice.led);
  }
  notices_.Push(std::move(notice));
  return {};
}

void Host::SendEvent(CIExtensionModule*, HostCommand& command) {
  try {
    Notice notice;
    notice.kind = Notice::Kind::Event;
    notice.event = ReadRequest(command);
    if (traffic_ != nullptr) {
      traffic_->OnEvent(notice.event);
    }
    notices_.Push(std::move(notice));
  } catch (const std::exception&) {
    // Out of memory: the event is lost, the next tree still tells the status.
  }
}

bool Host::SetModuleState(CIExtensionModule*, bool) {
  return true;
}

bool Host::ModuleStopping(CIExtensionModule*) {
  return true;
}

bool Host::SendToModule(CIExtensionModule*, HostCommand& command, std::uint32_t, std::uint32_t) {
  try {
    // There is no other module in this host.
    static_cast<void>(WriteAnswer(command, Answer::Refusal(AnswerStatus::NotFound)));
  } catch (const std::exception&) {
    return false;
  }
  return false;
}

std::uint32_t Host::HostKind(CIExtensionModule*) {
  return 0;
}

}  // namespace emstatus::host
