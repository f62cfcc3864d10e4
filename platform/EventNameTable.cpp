#include "platform/EventNameTable.h"

#include <algorithm>
#include <new>

#include "platform/EventState.h"

namespace emstatus {

// After the trace client, before everything that could create an event.
__attribute__((init_priority(102))) EventNameTable eventNames;

std::vector<EventState*>::iterator EventNameTable::LowerBound(std::string_view name) {
  return std::lower_bound(
      entries_.begin(), entries_.end(), name,
      [](const EventState* event, std::string_view wanted) { return *event->name < wanted; });
}

EventState* EventNameTable::Find(std::string_view name) {
  const RecursiveGuard guard(tableLock_);
  const auto found = LowerBound(name);
  return found != entries_.end() && *(*found)->name == name ? *found : nullptr;
}

bool EventNameTable::Insert(EventState& event) {
  constexpr std::size_t kGrowth = 16;
  const RecursiveGuard guard(tableLock_);
  try {
    if (entries_.size() == entries_.capacity()) entries_.reserve(entries_.size() + kGrowth);
  } catch (const std::bad_alloc&) {
    return false;
  }
  entries_.insert(LowerBound(*event.name), &event);
  return true;
}

void EventNameTable::Remove(const EventState& event) {
  const RecursiveGuard guard(tableLock_);
  const auto found = LowerBound(*event.name);
  if (found != entries_.end() && *found == &event) entries_.erase(found);
}

}  // namespace emstatus
