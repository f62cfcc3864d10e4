#include "host/providers/ValueText.h"

#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace emstatus::host {
namespace {

std::string BytesText(double bytes) {
  static constexpr std::array kUnits = {"B", "KiB", "MiB", "GiB", "TiB", "PiB"};
  std::size_t unit = 0;
  while (std::fabs(bytes) >= 1024 && unit + 1 < kUnits.size()) {
    bytes /= 1024;
    ++unit;
  }
  return Format(unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]);
}

std::string BitRateText(double rate) {
  static constexpr std::array kUnits = {"bit/s", "kbit/s", "Mbit/s", "Gbit/s", "Tbit/s"};
  std::size_t unit = 0;
  while (rate >= 1000 && unit + 1 < kUnits.size()) {
    rate /= 1000;
    ++unit;
  }
  return Format("%g %s", rate, kUnits[unit]);
}

}  // namespace

std::string Format(const char* format, ...) {
  std::array<char, 512> text{};
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  return text.data();
}

std::string ValueText(double value, Unit unit) {
  switch (unit) {
    case Unit::Celsius:
      return Format("%.1f °C", value);
    case Unit::RevolutionsPerMinute:
      return Format("%.0f RPM", value);
    case Unit::Volt:
      return Format("%.3f V", value);
    case Unit::Ampere:
      return Format("%.2f A", value);
    case Unit::Watt:
      return Format("%.1f W", value);
    case Unit::Percent:
      return Format("%.1f %%", value);
    case Unit::Byte:
      return BytesText(value);
    case Unit::BitPerSecond:
      return BitRateText(value);
    case Unit::Second:
      return SpanText(value);
    case Unit::None:
    case Unit::Count:
      break;
  }
  return Format("%.0f", value);
}

std::string SpanText(double seconds) {
  if (seconds < 120) {
    return Format("%.0f s", seconds);
  }
  if (seconds < 7200) {
    return Format("%.0f min", std::floor(seconds / 60));
  }
  if (seconds < 172800) {
    return Format("%.0f h", std::floor(seconds / 3600));
  }
  return Format("%.0f days", std::floor(seconds / 86400));
}

void AddToList(std::string& list, const std::string& item) {
  list += (list.empty() ? "" : ", ") + item;
}

}  // namespace emstatus::host
