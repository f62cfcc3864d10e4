#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/RecursiveLock.h"
#include "platform/RegistryValue.h"

namespace emstatus {

/// A key of the registry: its values and its child keys, sorted by name, byte by byte. A value and a child
/// key may have the same name. Every operation takes the node's own lock. [any thread; several at once]
class CRegistryNode {
 public:
  using Pointer = std::shared_ptr<CRegistryNode>;

  CRegistryNode() = default;
  CRegistryNode(const CRegistryNode&) = delete;
  CRegistryNode& operator=(const CRegistryNode&) = delete;

  /// A copy of the value, or nothing when there is none of that name.
  std::optional<RegistryValue> Value(std::string_view name) const;

  /// Adds the value or takes the place of the one of that name. The result tells entries apart in a trace and
  /// points to nothing that may be used.
  const void* SetValue(std::string_view name, RegistryValue value);

  /// False when there is none of that name.
  bool DeleteValue(std::string_view name);

  /// The child key, or nullptr when there is none of that name. It stays usable after it was removed from the
  /// tree, to no effect on the tree.
  Pointer Child(std::string_view name) const;

  /// The child key, added when there is none of that name.
  Pointer EnsureChild(std::string_view name);

  /// Removes a child key and all below it, telling each of them to the trace (level 2). False when there is
  /// none.
  bool DeleteChild(std::string_view name);

  /// Copies, in order.
  std::vector<std::pair<std::string, RegistryValue>> Values() const;
  std::vector<std::pair<std::string, Pointer>> Children() const;

 private:
  struct Entry {
    std::string name;
    RegistryValue value;
    Pointer key;  // nullptr for a value

    bool IsKey() const { return key != nullptr; }
  };

  /// Where the entry is or belongs.
  std::size_t PlaceOf(std::string_view name, bool isKey) const EM_REQUIRES(lock_);
  bool IsAt(std::size_t place, std::string_view name, bool isKey) const EM_REQUIRES(lock_);
  static void TellDeleted(const std::string& name, const CRegistryNode& node);

  mutable RecursiveLock lock_;
  // Guarded by lock_; sorted by name, a value before the key of the same name
  std::vector<Entry> entries_ EM_GUARDED_BY(lock_);
};

}  // namespace emstatus
