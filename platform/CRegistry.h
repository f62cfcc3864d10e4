#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CRegistryNode.h"
#include "platform/RecursiveLock.h"
#include "platform/RegistryValue.h"

namespace emstatus {

/// The number of a key. A key has the same number as long as the registry object lives, also when it is
/// deleted and made again meanwhile or the tree is read anew; nothing needs to be given back.
using RegistryHandle = std::int32_t;

inline constexpr RegistryHandle kNoRegistryKey = 0;
inline constexpr RegistryHandle HKEY_LOCAL_MACHINE = 1;
inline constexpr RegistryHandle HKEY_CURRENT_USER = 2;
inline constexpr RegistryHandle HKEY_USERS = 3;
inline constexpr RegistryHandle HKEY_CLASSES_ROOT = 4;
inline constexpr RegistryHandle HKEY_CURRENT_CONFIG = 5;

/// A registry in the manner of Windows', kept in memory and in a text file (platform/RegistryFile.h).
///
/// Keys are named by a path below another key, with "\" between the names; names are compared byte by byte.
/// The five root keys are always there, and so is the key under which the host leaves its own path. The first
/// use of any operation below SaveTree() reads the files, once, whether or not there are any.
///
/// Every operation is told to the trace on level 2 (reading a value on level 4). One lock for the whole tree
/// is held in each. [any thread; several at once]
class CRegistry {
 public:
  /// The files "registry", "registry.old", "registry.new" and "registry.default" are those of `directory`; an
  /// empty one stands for no files at all. Reads nothing yet.
  explicit CRegistry(std::string directory = "/opt/TalvernPX/vital/etc/vexagent");
  CRegistry(const CRegistry&) = delete;
  CRegistry& operator=(const CRegistry&) = delete;

  /// Makes a tree of nothing but the root keys; an earlier tree and what was not saved of it are dropped.
  void InitClass();

  /// Reads the tree from "registry", or else from "registry.old", or else from "registry.default". A tree
  /// that is there already, because it was read before or changed since, stays as it is and counts as
  /// success, unless `forceSetup`, which drops what was not saved. False when no file could be read: the tree
  /// stays as it was. Each failed file is told to the trace (level 1).
  bool SetupTree(bool forceSetup);

  /// Writes the tree to "registry.new", keeps "registry", unless it is empty, as "registry.old", and gives
  /// the new file its name. False, with a line in the trace (level 1), when a file cannot be written, and
  /// false when there is no tree.
  bool SaveTree();

  /// The number of a key below `parent` (of `parent` itself for an empty path), or kNoRegistryKey when there
  /// is no such key.
  RegistryHandle Open(RegistryHandle parent, const char* path);

  /// The same, and makes the keys that are missing. kNoRegistryKey when `parent` is no key, a name cannot be
  /// written to the file ("]", line feeds, over 1020 characters), or the key would be more than 64 levels
  /// deep.
  RegistryHandle CreateKey(RegistryHandle parent, const char* path);

  /// The key itself, or nullptr when there is no such key. Changes made through it are part of the next save,
  /// though SetupTree() does not count them as changes; once the key was deleted or the tree read anew they
  /// are without effect.
  CRegistryNode::Pointer OpenPointer(RegistryHandle parent, const char* path);

  /// A copy of a value, or nothing when there is no such key or value.
  std::optional<RegistryValue> GetValue(RegistryHandle key, const char* name);

  /// The same into the caller's memory: `*type` (unless null), the data as RegistryValue::CopyTo() writes it,
  /// and in `*count` its size. With null `data` only the type and the size. False when there is no such key
  /// or value, when `*count` bytes are not enough (then `*count` is the size needed), and for a null `count`,
  /// with a line in the trace (level 1).
  bool QueryValue(RegistryHandle key, const char* name, RegistryType* type, void* data, std::uint32_t* count);

  /// Adds or changes a value. False when there is no such key, and for what cannot be written to the file:
  /// "=" or a line feed in the name, a line feed in the text, more than one line of 1022 characters in all.
  bool SetValue(RegistryHandle key, const char* name, RegistryValue value);

  /// False when there is no such key or value.
  bool DeleteValue(RegistryHandle key, const char* name);

  /// Deletes a key below `parent` with all keys below it. False when there is no such key, and for an empty
  /// path.
  bool DeleteKey(RegistryHandle parent, const char* path);

 private:
  using Names = std::vector<std::string>;

  void Ready() EM_REQUIRES(lock_);
  std::string PathOf(const char* file) const;
  bool Restore(const std::string& path) EM_REQUIRES(lock_);
  bool WriteNewFile(const std::string& path) EM_REQUIRES(lock_);
  /// The names from the root key to a key below `parent`; empty when `parent` is no handle.
  Names NamesOf(RegistryHandle parent, const char* path) const EM_REQUIRES(lock_);
  CRegistryNode::Pointer Find(const Names& names) const EM_REQUIRES(lock_);
  RegistryHandle HandleOf(const Names& names) EM_REQUIRES(lock_);

  // Constant after construction
  const std::string directory_;
  RecursiveLock lock_;
  // Guarded by lock_
  CRegistryNode::Pointer top_ EM_GUARDED_BY(lock_);
  std::vector<Names> keys_ EM_GUARDED_BY(lock_);  // by handle, the first one being 1
  std::map<Names, RegistryHandle> handles_ EM_GUARDED_BY(lock_);
  bool wasReady_ EM_GUARDED_BY(lock_) = false;
  bool isSetup_ EM_GUARDED_BY(lock_) = false;
  bool isDirty_ EM_GUARDED_BY(lock_) = false;
};

}  // namespace emstatus
