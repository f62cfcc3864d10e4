#include "host/module/NoticeQueue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace emstatus::host {
namespace {

int NewEventDescriptor() {
  const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (descriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  return descriptor;
}

}  // namespace

NoticeQueue::NoticeQueue() : descriptor_(NewEventDescriptor()) {}

NoticeQueue::~NoticeQueue() {
  close(descriptor_);
}

void NoticeQueue::Push(Notice notice) {
  notice.time = std::chrono::system_clock::now();
  const std::lock_guard guard(lock_);
  // A burst of changes is one change.
  const bool known = notice.kind == Notice::Kind::Changed && !notices_.empty() &&
                     notices_.back().kind == Notice::Kind::Changed;
  if (!known) {
    notices_.push_back(std::move(notice));
  }
  static_cast<void>(eventfd_write(descriptor_, 1));
}

std::vector<Notice> NoticeQueue::Take() {
  const std::lock_guard guard(lock_);
  eventfd_t count = 0;
  static_cast<void>(eventfd_read(descriptor_, &count));
  return std::exchange(notices_, {});
}

}  // namespace emstatus::host
