#include "host/machine/ObjectTable.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "host/machine/ReadingText.h"

namespace emstatus::host {
namespace {

std::chrono::milliseconds Milliseconds(ObjectTable::Clock::duration duration) {
  return std::max(std::chrono::duration_cast<std::chrono::milliseconds>(duration),
                  std::chrono::milliseconds(0));
}

std::string SecondsText(std::chrono::milliseconds age) {
  return NumberText(std::floor(double(age.count()) / 1000.0), Unit::Second);
}

void MakeLate(Reading& reading, std::chrono::milliseconds age) {
  reading.reason = "not read for " + SecondsText(age);
  if (reading.measurement) {
    reading.reason += ", last " + NumberText(reading.measurement->value, reading.measurement->unit);
  }
  reading.quality = Quality::Late;
  reading.measurement.reset();
}

}  // namespace

std::size_t ObjectTable::AddProvider(std::string name, std::chrono::milliseconds lateAfter) {
  const std::lock_guard guard(lock_);
  providers_.push_back({std::move(name), lateAfter, std::nullopt, {}});
  return providers_.size() - 1;
}

bool ObjectTable::Update(std::size_t provider, std::vector<Reading> readings, Clock::time_point takenAt,
                         Clock::time_point finished) {
  const std::lock_guard guard(lock_);
  for (auto& [classKey, slots] : slots_) {
    for (Slot& slot : slots) {
      slot.told = slot.told && slot.key.provider != provider;
    }
  }
  bool changed = false;
  for (Reading& reading : readings) {
    changed |= Store(provider, std::move(reading), takenAt);
  }
  changed |= MarkGone(provider);
  ProviderRow& row = providers_.at(provider);
  changed |= !row.failure.empty();
  row.failure.clear();
  row.finished = finished;
  readOnce_.notify_all();
  return changed;
}

bool ObjectTable::Fail(std::size_t provider, std::string why, Clock::time_point finished) {
  const std::lock_guard guard(lock_);
  ProviderRow& row = providers_.at(provider);
  const bool changed = row.failure.empty();
  row.failure = std::move(why);
  row.finished = finished;
  readOnce_.notify_all();
  return changed;
}

bool ObjectTable::Store(std::size_t provider, Reading reading, Clock::time_point takenAt) {
  std::vector<Slot>& slots = slots_[{reading.objectClass, reading.cabinet.value_or(0)}];
  const auto find = [&](const std::string& id) {
    return std::ranges::find_if(
        slots, [&](const Slot& slot) { return slot.key.provider == provider && slot.key.id == id; });
  };
  std::string id = reading.id;
  auto found = find(id);
  // Two objects under one id are still two objects.
  for (int number = 2; found != slots.end() && found->told; ++number) {
    id = reading.id + "#" + std::to_string(number);
    found = find(id);
  }
  const auto taken = reading.takenAt.value_or(takenAt);
  if (found == slots.end()) {
    slots.push_back({{provider, std::move(id)}, std::move(reading), taken, true});
    return true;
  }
  const bool changed = RawStateOf(found->reading) != RawStateOf(reading);
  found->reading = std::move(reading);
  found->takenAt = taken;
  found->told = true;
  return changed;
}

bool ObjectTable::MarkGone(std::size_t provider) {
  bool changed = false;
  for (auto& [classKey, slots] : slots_) {
    for (Slot& slot : slots) {
      if (slot.key.provider != provider || slot.told) {
        continue;
      }
      const Quality quality = slot.reading.mayGo ? Quality::Inactive : Quality::Lost;
      changed |= slot.reading.quality != quality;
      slot.reading.quality = quality;
      slot.reading.measurement.reset();
      slot.reading.reason = slot.reading.mayGo ? "no longer there" : "was there and is gone";
    }
  }
  return changed;
}

bool ObjectTable::WaitUntilRead(std::chrono::milliseconds limit) const {
  std::unique_lock guard(lock_);
  return readOnce_.wait_for(guard, limit, [&] {
    return std::ranges::all_of(providers_, [](const ProviderRow& row) { return row.finished.has_value(); });
  });
}

std::uint32_t ObjectTable::Count(ObjectClass objectClass, std::uint32_t cabinet) const {
  const std::lock_guard guard(lock_);
  if (objectClass == ObjectClass::HealthSource) {
    return cabinet == 0 ? std::uint32_t(providers_.size()) : 0;
  }
  const auto found = slots_.find({objectClass, cabinet});
  return found == slots_.end() ? 0 : std::uint32_t(found->second.size());
}

const ObjectTable::Slot* ObjectTable::SlotAt(const ObjectAddress& address) const {
  const auto found = slots_.find({address.objectClass, address.cabinet});
  const std::uint32_t first = RowOf(address.objectClass).firstIndex;
  if (found == slots_.end() || address.index < first || address.index - first >= found->second.size()) {
    return nullptr;
  }
  return &found->second[address.index - first];
}

std::optional<ObjectView> ObjectTable::Find(const ObjectAddress& address, Clock::time_point now) const {
  const std::lock_guard guard(lock_);
  if (address.objectClass == ObjectClass::HealthSource) {
    const bool there = address.cabinet == 0 && address.index < providers_.size();
    return there ? std::optional(ProviderView(address.index, now)) : std::nullopt;
  }
  const Slot* slot = SlotAt(address);
  return slot == nullptr ? std::nullopt : std::optional(View(address, *slot, now));
}

std::optional<ObjectView> ObjectTable::FindByName(ObjectClass objectClass, std::uint32_t cabinet,
                                                  std::string_view name, Clock::time_point now) const {
  const std::uint32_t first = RowOf(objectClass).firstIndex;
  const std::uint32_t count = Count(objectClass, cabinet);
  for (std::uint32_t index = first; index < first + count; ++index) {
    auto view = Find({objectClass, index, cabinet}, now);
    if (view && (view->reading.name == name || view->reading.id == name)) {
      return view;
    }
  }
  return std::nullopt;
}

std::vector<ObjectTable::Key> ObjectTable::Keys(ObjectClass objectClass, std::uint32_t cabinet) const {
  const std::lock_guard guard(lock_);
  std::vector<Key> keys;
  if (const auto found = slots_.find({objectClass, cabinet}); found != slots_.end()) {
    std::ranges::transform(found->second, std::back_inserter(keys), [](const Slot& slot) {
      return Key{slot.key.provider, slot.reading.id};
    });
  }
  return keys;
}

std::uint32_t ObjectTable::DismissGone(ObjectClass objectClass, std::uint32_t cabinet) {
  const std::lock_guard guard(lock_);
  std::uint32_t dismissed = 0;
  const auto found = slots_.find({objectClass, cabinet});
  if (found == slots_.end()) {
    return 0;
  }
  for (Slot& slot : found->second) {
    if (!slot.told && slot.reading.quality == Quality::Lost) {
      slot.reading.mayGo = true;
      slot.reading.quality = Quality::Inactive;
      slot.reading.reason = "no longer there";
      ++dismissed;
    }
  }
  return dismissed;
}

ObjectView ObjectTable::View(const ObjectAddress& address, const Slot& slot, Clock::time_point now) const {
  ObjectView view{address, slot.reading, Milliseconds(now - slot.takenAt)};
  const auto lateAfter = slot.reading.lateAfter.value_or(providers_.at(slot.key.provider).lateAfter);
  // What is gone stays gone; everything else is unknown once nobody reads it any more.
  if (slot.told && view.age > lateAfter) {
    MakeLate(view.reading, view.age);
  }
  return view;
}

ObjectView ObjectTable::ProviderView(std::size_t provider, Clock::time_point now) const {
  const ProviderRow& row = providers_[provider];
  ObjectView view{{ObjectClass::HealthSource, std::uint32_t(provider), 0}, {}, std::chrono::milliseconds(0)};
  Reading& reading = view.reading;
  reading.objectClass = ObjectClass::HealthSource;
  reading.id = row.name;
  reading.name = row.name;
  if (!row.finished) {
    reading.reason = "not read yet";
    return view;
  }
  view.age = Milliseconds(now - *row.finished);
  reading.quality = Quality::Good;
  if (!row.failure.empty()) {
    reading.quality = Quality::SensorFault;
    reading.reason = row.failure;
  }
  if (view.age > row.lateAfter) {
    reading.quality = Quality::Late;
    reading.reason = "not finished for " + SecondsText(view.age);
  }
  return view;
}

}  // namespace emstatus::host
