// A library that uses events and trace from its static objects on: what the module is to its host.
#include "platform/CDebugClient.h"
#include "platform/EventHandle.h"

namespace {

emstatus::EventHandle& Created(emstatus::EventHandle& event, const char* name) {
  event.Create(false, true, name);
  return event;
}

emstatus::EventHandle named;
const bool builtAtLoad = Created(named, "built while the library is loaded").IsValid();

}  // namespace

extern "C" __attribute__((visibility("default"))) bool UseLibrary() {
  emstatus::EventHandle user;
  user.Create(false, false, "built while the library is loaded");
  named.Set();
  emstatus::debugClient.Print("used");
  return builtAtLoad && user.Check();
}
