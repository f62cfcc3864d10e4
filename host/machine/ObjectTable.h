#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/machine/Machine.h"

namespace emstatus::host {

/// All objects that the providers have told of, each under a number that it keeps as long as the program
/// runs. A provider that stops telling makes its readings late by their age. Each provider itself is an
/// object of the class HealthSource. [any thread]
class ObjectTable {
 public:
  using Clock = std::chrono::steady_clock;

  /// An object as its provider knows it (Reading::id).
  struct Key {
    std::size_t provider = 0;
    std::string id;
  };

  /// Makes room for a provider, before its first reading; returns its number, counting from 0.
  std::size_t AddProvider(std::string name, std::chrono::milliseconds lateAfter);

  /// Takes over what a provider has read: `takenAt` is when the read began. Objects that it no longer tells
  /// become Lost, or Inactive. True when the raw state of an object is another than before.
  bool Update(std::size_t provider, std::vector<Reading> readings, Clock::time_point takenAt,
              Clock::time_point finished);

  /// A read that ended by an exception. Its readings grow old. True as for Update.
  bool Fail(std::size_t provider, std::string why, Clock::time_point finished);

  /// Waits until every provider has finished a read, well or not; false when `limit` came first.
  bool WaitUntilRead(std::chrono::milliseconds limit) const;

  std::uint32_t Count(ObjectClass objectClass, std::uint32_t cabinet) const;
  std::optional<ObjectView> Find(const ObjectAddress& address, Clock::time_point now) const;
  /// The first object of the class with that name or id.
  std::optional<ObjectView> FindByName(ObjectClass objectClass, std::uint32_t cabinet, std::string_view name,
                                       Clock::time_point now) const;
  /// The objects of a class that providers know: not those of HealthSource.
  std::vector<Key> Keys(ObjectClass objectClass, std::uint32_t cabinet) const;

  /// Takes those of the class that are gone for taken away on purpose: they become inactive. How many they
  /// are.
  std::uint32_t DismissGone(ObjectClass objectClass, std::uint32_t cabinet);

 private:
  struct Slot {
    Key key;
    Reading reading;
    Clock::time_point takenAt;
    bool told = false;
  };
  struct ProviderRow {
    std::string name;
    std::chrono::milliseconds lateAfter{0};
    std::optional<Clock::time_point> finished;
    std::string failure;
  };
  using ClassKey = std::pair<ObjectClass, std::uint32_t>;

  bool Store(std::size_t provider, Reading reading, Clock::time_point takenAt);
  bool MarkGone(std::size_t provider);
  ObjectView View(const ObjectAddress& address, const Slot& slot, Clock::time_point now) const;
  ObjectView ProviderView(std::size_t provider, Clock::time_point now) const;
  const Slot* SlotAt(const ObjectAddress& address) const;

  mutable std::mutex lock_;
  mutable std::condition_variable readOnce_;
  // Guarded by lock_
  std::vector<ProviderRow> providers_;
  std::map<ClassKey, std::vector<Slot>> slots_;
};

}  // namespace emstatus::host
