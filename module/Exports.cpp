#include <new>

#include <emstatus/EntryPoints.h>

#include "module/EM_Status.h"
#include "platform/CDebugClient.h"

namespace emstatus {
namespace {

/// There is never more than one; created and destroyed by the host, never at the same time.
EM_Status* theModule = nullptr;

const char* SetupActionName(std::uint32_t action) {
  switch (action) {
    case 1:
      return "BACKUP";
    case 2:
      return "RESTORE";
    case 3:
      return "CONVERT";
    case 4:
      return "CLEANUP";
    default:
      return nullptr;
  }
}

/// Null when there is no memory for it, or a part of it cannot be made.
EM_Status* NewModule() {
  try {
    return new EM_Status;
  } catch (...) {
    return nullptr;
  }
}

}  // namespace
}  // namespace emstatus

using emstatus::kModuleName;
using emstatus::theModule;

#define EM_EXPORT extern "C" __attribute__((visibility("default")))

EM_EXPORT bool EM_Create(emstatus::CIExtensionModule** out, std::uintptr_t) {
  if (theModule != nullptr) {
    EM_TRACE_ALWAYS(1, "\nEM DLL (%-10s) : ## ERROR: Module already existing!\n", kModuleName);
  } else {
    EM_TRACE_ALWAYS(2, "\nEM DLL (%-10s) : Create module", kModuleName);
    theModule = emstatus::NewModule();
    if (theModule == nullptr) {
      EM_TRACE_ALWAYS(1, "\nEM DLL (%-10s) : ## ERROR: Module could not be created!\n", kModuleName);
    }
  }
  if (out != nullptr) *out = theModule;
  return theModule != nullptr;
}

EM_EXPORT int EM_Delete() {
  if (theModule == nullptr) {
    EM_TRACE_ALWAYS(1, "\nEM DLL (%-10s) : Module already destroyed!", kModuleName);
    return 0;
  }
  try {
    EM_TRACE_ALWAYS(1, "\nEM DLL (%-10s) : Destroy module...", kModuleName);
    delete theModule;
    theModule = nullptr;
    EM_TRACE_ALWAYS(1, "\nEM DLL (%-10s) : .. Module destroyed successfully!", kModuleName);
    return 1;
  } catch (...) {
    EM_TRACE_ALWAYS(1, "\nEM DLL (%-10s) : ## ERROR! Exception while destroying module!", kModuleName);
    return 0;
  }
}

EM_EXPORT const char* EM_GetModuleName() {
  return kModuleName;
}

EM_EXPORT int EM_SetupAction(std::uint32_t action) {
  if (const char* name = emstatus::SetupActionName(action)) {
    EM_TRACE_ALWAYS(1, "\n\n%-20s: ## Setup action \"%s\" call - no action function defined\n", kModuleName,
                    name);
  } else {
    EM_TRACE_ALWAYS(
        1, "\n\n%-20s: ## ERROR! Setup action call with unknown action type (%d) - no action defined!\n",
        kModuleName, static_cast<int>(action));
  }
  return 1;
}
