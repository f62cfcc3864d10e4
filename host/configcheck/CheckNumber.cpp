#include <cerrno>
#include <cstdlib>
#include <limits>

#include "host/configcheck/Checks.h"

namespace emstatus::host {

void CheckNumber(const IniFile& ini, const std::string& section, const std::string& key, int base,
                 Problems& problems) {
  const auto value = ini.Value(section, key);
  if (!value) {
    return;
  }
  const Problems::Place place = PlaceOf(ini, section, key);
  const std::string& text = *value;
  char* end = nullptr;
  errno = 0;
  const long long number = std::strtoll(text.c_str(), &end, base);
  const bool fits = errno == 0 && number >= std::numeric_limits<std::int32_t>::min() &&
                    number <= std::numeric_limits<std::uint32_t>::max();
  const std::size_t sign = text.starts_with('-') ? 1 : 0;
  if (end == text.c_str()) {
    problems.Error(place, Quoted(text) + " is no number; 0 is used", "write a whole number");
  } else if (!fits) {
    problems.Error(place, text + " does not fit into 32 bits", "write a smaller number");
  } else if (*end != '\0') {
    problems.Warning(place, Quoted(text) + " is read as " + std::to_string(number), "write the number alone");
  } else if (base == 0 && text.size() > sign + 1 && text[sign] == '0' && text[sign + 1] >= '0' &&
             text[sign + 1] <= '9') {
    problems.Warning(place, text + " begins with 0 and is octal: " + std::to_string(number),
                     "leave the leading zeros out");
  }
}

}  // namespace emstatus::host
