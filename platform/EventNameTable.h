#pragma once

#include <string_view>
#include <vector>

#include "platform/RecursiveLock.h"

namespace emstatus {

struct EventState;

/// The named events of the process, by name. Owns none of them. [any thread]
class EventNameTable {
 public:
  EventNameTable() = default;
  EventNameTable(const EventNameTable&) = delete;
  EventNameTable& operator=(const EventNameTable&) = delete;

  /// Held across the whole of an event's creation, copying and release; taken before the table's own lock.
  RecursiveLock& EventLock() EM_RETURN_CAPABILITY(eventLock_) { return eventLock_; }

  /// The event of this name, none: nullptr.
  EventState* Find(std::string_view name) EM_EXCLUDES(tableLock_);
  /// Adds a named event that is not there yet. False, with the table as it was, when there is no memory.
  bool Insert(EventState& event) EM_EXCLUDES(tableLock_);
  /// Takes a named event out; nothing when it is not there.
  void Remove(const EventState& event) EM_EXCLUDES(tableLock_);

 private:
  std::vector<EventState*>::iterator LowerBound(std::string_view name) EM_REQUIRES(tableLock_);

  RecursiveLock eventLock_;
  RecursiveLock tableLock_;
  // Sorted by name, byte by byte
  std::vector<EventState*> entries_ EM_GUARDED_BY(tableLock_);
};

/// Built when the library is loaded, before the events of other static objects, and destroyed after them.
extern EventNameTable eventNames;

}  // namespace emstatus
