#include "host/commands/StopSignals.h"

#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace emstatus::host {
namespace {

sigset_t StopSet() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  // One that is ignored (nohup, a service) would come all the same once it is blocked.
  for (const int number : {SIGHUP, SIGPIPE}) {
    struct sigaction action {};
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
      sigaddset(&set, number);
    }
  }
  return set;
}

}  // namespace

StopSignals::StopSignals() : descriptor_(-1) {
  const sigset_t set = StopSet();
  pthread_sigmask(SIG_BLOCK, &set, &before_);
  descriptor_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
  if (descriptor_ < 0) {
    throw std::system_error(errno, std::generic_category(), "signalfd");
  }
}

StopSignals::~StopSignals() {
  // Taken signals must not strike when they are unblocked.
  signalfd_siginfo taken{};
  while (read(descriptor_, &taken, sizeof(taken)) > 0) {
  }
  close(descriptor_);
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

bool StopSignals::HasCome() const {
  pollfd polled{descriptor_, POLLIN, 0};
  return poll(&polled, 1, 0) > 0;
}

}  // namespace emstatus::host
