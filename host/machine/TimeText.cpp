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

}  // namespace emstatus::host
