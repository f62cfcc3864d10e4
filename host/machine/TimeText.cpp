#include "host/machine/TimeText.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace emstatus::host {
namespace {

using Moment = std::chrono::system_clock::time_point;

std::string Text(const std::tm& parts, const char* format) {
  std::array<char, 64> text{};
  return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

std::tm Local(Moment moment) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
  std::tm parts{};
  localtime_r(&seconds, &parts);
  return parts;
}

std::string Milliseconds(Moment moment) {
  const auto part = std::chrono::floor<std::chrono::milliseconds>(moment) -
                    std::chrono::floor<std::chrono::seconds>(moment);
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), ".%03d", int(part.count()));
  return text.data();
}

}  // namespace

std::string ClockText(Moment moment) {
  return Text(Local(moment), "%H:%M:%S") + Milliseconds(moment);
}

std::string LocalText(Moment moment) {
  return Text(Local(moment), "%Y-%m-%d %H:%M:%S");
}

std::string UtcText(Moment moment) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  return Text(parts, "%Y-%m-%dT%H:%M:%S") + Milliseconds(moment) + "Z";
}

std::optional<Moment> ReadUtc(const std::string& text) {
  std::tm parts{};
  int milliseconds = 0;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d.%3dZ", &parts.tm_year, &parts.tm_mon, &parts.tm_mday,
                  &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &milliseconds) != 7) {
    return std::nullopt;
  }
  parts.tm_year -= 1900;
  parts.tm_mon -= 1;
  const Moment moment =
      std::chrono::system_clock::from_time_t(timegm(&parts)) + std::chrono::milliseconds(milliseconds);
  // A text that is not as it is written, or names no real moment, does not come back.
  return UtcText(moment) == text ? std::optional(moment) : std::nullopt;
}

}  // namespace emstatus::host
