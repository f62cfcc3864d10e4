#pragma once

#include <string>
#include <vector>

namespace emstatus {

/// The parts of `text` between separators; runs of separators give no empty parts.
std::vector<std::string> SplitText(const std::string& text, char separator);

}  // namespace emstatus
