#include "platform/CRegistryNode.h"

#include <algorithm>
#include <iterator>

#include "platform/CDebugClient.h"

namespace emstatus {

std::size_t CRegistryNode::PlaceOf(std::string_view name, bool isKey) const {
  const auto found = std::ranges::lower_bound(entries_, std::pair(name, isKey), {}, [](const Entry& entry) {
    return std::pair(std::string_view(entry.name), entry.IsKey());
  });
  return static_cast<std::size_t>(found - entries_.begin());
}

bool CRegistryNode::IsAt(std::size_t place, std::string_view name, bool isKey) const {
  return place < entries_.size() && entries_[place].name == name && entries_[place].IsKey() == isKey;
}

std::optional<RegistryValue> CRegistryNode::Value(std::string_view name) const {
  const RecursiveGuard guard(lock_);
  const std::size_t place = PlaceOf(name, false);
  if (!IsAt(place, name, false)) return std::nullopt;
  return entries_[place].value;
}

const void* CRegistryNode::SetValue(std::string_view name, RegistryValue value) {
  const RecursiveGuard guard(lock_);
  const std::size_t place = PlaceOf(name, false);
  if (IsAt(place, name, false)) {
    entries_[place].value = std::move(value);
  } else {
    entries_.insert(std::next(entries_.begin(), static_cast<std::ptrdiff_t>(place)),
                    Entry{std::string(name), std::move(value), nullptr});
  }
  return &entries_[place];
}

bool CRegistryNode::DeleteValue(std::string_view name) {
  const RecursiveGuard guard(lock_);
  const std::size_t place = PlaceOf(name, false);
  if (!IsAt(place, name, false)) return false;
  entries_.erase(std::next(entries_.begin(), static_cast<std::ptrdiff_t>(place)));
  return true;
}

CRegistryNode::Pointer CRegistryNode::Child(std::string_view name) const {
  const RecursiveGuard guard(lock_);
  const std::size_t place = PlaceOf(name, true);
  return IsAt(place, name, true) ? entries_[place].key : nullptr;
}

CRegistryNode::Pointer CRegistryNode::EnsureChild(std::string_view name) {
  const RecursiveGuard guard(lock_);
  const std::size_t place = PlaceOf(name, true);
  if (!IsAt(place, name, true)) {
    entries_.insert(std::next(entries_.begin(), static_cast<std::ptrdiff_t>(place)),
                    Entry{std::string(name), RegistryValue::WithoutData(RegistryType::kKey),
                          std::make_shared<CRegistryNode>()});
  }
  return entries_[place].key;
}

bool CRegistryNode::DeleteChild(std::string_view name) {
  Pointer removed;
  {
    const RecursiveGuard guard(lock_);
    const std::size_t place = PlaceOf(name, true);
    if (!IsAt(place, name, true)) return false;
    removed = std::move(entries_[place].key);
    entries_.erase(std::next(entries_.begin(), static_cast<std::ptrdiff_t>(place)));
  }
  TellDeleted(std::string(name), *removed);
  return true;
}

void CRegistryNode::TellDeleted(const std::string& name, const CRegistryNode& node) {
  for (const auto& [childName, child] : node.Children()) TellDeleted(childName, *child);
  EM_TRACE_ALWAYS(2, "CRegistryNode::deleteNode \"%s\"\n", name.c_str());
}

std::vector<std::pair<std::string, RegistryValue>> CRegistryNode::Values() const {
  const RecursiveGuard guard(lock_);
  std::vector<std::pair<std::string, RegistryValue>> values;
  for (const Entry& entry : entries_) {
    if (!entry.IsKey()) values.emplace_back(entry.name, entry.value);
  }
  return values;
}

std::vector<std::pair<std::string, CRegistryNode::Pointer>> CRegistryNode::Children() const {
  const RecursiveGuard guard(lock_);
  std::vector<std::pair<std::string, Pointer>> children;
  for (const Entry& entry : entries_) {
    if (entry.IsKey()) children.emplace_back(entry.name, entry.key);
  }
  return children;
}

}  // namespace emstatus
