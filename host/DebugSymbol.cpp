#include "host/module/TraceOutput.h"

/// The object that modules look up by name in the running program and trace to.
extern "C" {
__attribute__((visibility("default"), used))
emstatus::host::TraceOutput Debug(emstatus::host::WriteToStandardError);
}
