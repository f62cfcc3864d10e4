#include "host/commands/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <iostream>

namespace emstatus::host {

void TakeClosedStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) < 0) {
      // The lowest number that is free is this one. It takes no writing, or no reading.
      (void)open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

bool FlushStandardOutput() {
  std::cout.flush();
  return bool(std::cout);
}

}  // namespace emstatus::host
