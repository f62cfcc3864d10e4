#pragma once

#include <cxxabi.h>

#include "platform/CDebugClient.h"

namespace emstatus {

/// Runs what the host called on the module. An exception ends here: it is traced, and the host gets `failed`.
/// A host that cancels its thread inside is let go on.
template <typename Result, typename Body>
Result AtHostEdge(const char* operation, Result failed, const Body& body) {
  try {
    return body();
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (...) {
    EM_TRACE(1, "\n\nEM_STATUS           : ## ERROR! Exception in %s!", operation);
    return failed;
  }
}

}  // namespace emstatus
