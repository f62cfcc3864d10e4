#pragma once

#include <string>
#include <vector>

namespace emstatus::test {

/// The messages of the sink in this library, each with its way in and the module's name; empties the store.
std::vector<std::string> TakeFromSecondSink();

}  // namespace emstatus::test
