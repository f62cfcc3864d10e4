#include "config/SplitText.h"

#include <algorithm>

namespace emstatus {

std::vector<std::string> SplitText(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t begin = text.find_first_not_of(separator); begin != std::string::npos;) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = text.find_first_not_of(separator, end);
  }
  return parts;
}

}  // namespace emstatus
