#include "host/recording/ObjectJournal.h"

#include <set>
#include <utility>

#include "host/module/ModuleSession.h"
#include "host/view/AssociationKey.h"
#include "host/view/TreeJson.h"

namespace emstatus::host {
namespace {

constexpr const char* kAge = "AgeSeconds";

void CollectAddresses(const StatusNode& node, std::set<ObjectAddress>& addresses) {
  if (const auto address = ObjectOfKey(node.associationKey, ModuleSession::kServerCabinet)) {
    addresses.insert(*address);
  }
  for (const StatusNode& child : node.children) {
    CollectAddresses(child, addresses);
  }
}

/// The members that differ; null when only the age does.
nlohmann::json ChangeOf(const nlohmann::json& before, const nlohmann::json& now) {
  nlohmann::json change;
  for (const auto& [name, value] : now.items()) {
    const auto old = before.find(name);
    if (name != kAge && (old == before.end() || *old != value)) {
      change[name] = value;
    }
  }
  for (const auto& [name, value] : before.items()) {
    if (!now.contains(name)) {
      change[name] = nullptr;
    }
  }
  if (!change.is_null()) {
    change[kAge] = now.value(kAge, 0.0);
  }
  return change;
}

}  // namespace

std::vector<RecordedObject> ObjectJournal::Note(const StatusNode& root, const Machine& machine) {
  std::set<ObjectAddress> addresses;
  CollectAddresses(root, addresses);
  std::vector<RecordedObject> entries;
  for (const auto& [address, known] : objects_) {
    if (!addresses.contains(address)) {
      entries.push_back({address, nullptr});
    }
  }
  for (const ObjectAddress& address : addresses) {
    const auto object = machine.Find(address);
    const nlohmann::json* before = Find(address);
    if (object) {
      nlohmann::json change = ChangeOf(before == nullptr ? nlohmann::json::object() : *before,
                                       nlohmann::json(ObjectJson(*object)));
      if (!change.is_null()) {
        entries.push_back({address, std::move(change)});
      }
    } else if (before != nullptr) {
      entries.push_back({address, nullptr});
    }
  }
  for (const RecordedObject& entry : entries) {
    Apply(entry);
  }
  return entries;
}

void ObjectJournal::Apply(const RecordedObject& entry) {
  if (entry.change.is_null()) {
    objects_.erase(entry.address);
    return;
  }
  nlohmann::json& object = objects_.try_emplace(entry.address, nlohmann::json::object()).first->second;
  for (const auto& [name, value] : entry.change.items()) {
    if (value.is_null()) {
      object.erase(name);
    } else {
      object[name] = value;
    }
  }
}

const nlohmann::json* ObjectJournal::Find(const ObjectAddress& address) const {
  const auto found = objects_.find(address);
  return found == objects_.end() ? nullptr : &found->second;
}

}  // namespace emstatus::host
