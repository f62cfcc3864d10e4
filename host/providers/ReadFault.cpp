#include "host/providers/ReadFault.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace emstatus::host {

bool IsGone(int error) {
  return error == ENOENT || error == ENODEV || error == ESRCH || error == ENOTDIR;
}

Quality QualityOfError(int error) {
  switch (error) {
    case ENODATA:
    case EOPNOTSUPP:
      return Quality::Inactive;
    case ENOENT:
    case ENODEV:
    case ESRCH:
    case ENOTDIR:
      return Quality::Lost;
    // The device did not answer (in time), or we were not let through to it: nothing is known of it.
    case EAGAIN:
    case EBUSY:
    case EINTR:
    case ETIMEDOUT:
    case EACCES:
    case EPERM:
    case ENFILE:
    case EMFILE:
    case ENOMEM:
      return Quality::Late;
    default:
      return Quality::SensorFault;
  }
}

std::string ErrorText(int error) {
  const char* text = strerrordesc_np(error);
  return text != nullptr ? text : "error " + std::to_string(error);
}

void SetUnread(Reading& reading, const std::string& what, int error) {
  const Quality quality = QualityOfError(error);
  std::string reason = quality == Quality::Inactive ? "no value now" : "cannot be read";
  SetUnknown(reading, quality, reason + ": " + what + ": " + ErrorText(error));
  if (error == EACCES || error == EPERM) {
    reading.advice = "run emhost with the right to read it";
  }
}

void SetUnknown(Reading& reading, Quality quality, std::string reason) {
  reading.condition = Condition::Good;
  reading.quality = quality;
  reading.measurement.reset();
  reading.reason = std::move(reason);
}

}  // namespace emstatus::host
