#include "platform/CRegistry.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>

#include "platform/CDebugClient.h"
#include "platform/FileDescriptor.h"
#include "platform/NullableText.h"
#include "platform/RegistryFile.h"

namespace emstatus {

namespace {

// In the order of their handles.
constexpr const char* kRootKeys[] = {"HKEY_LOCAL_MACHINE", "HKEY_CURRENT_USER", "HKEY_USERS",
                                     "HKEY_CLASSES_ROOT", "HKEY_CURRENT_CONFIG"};
constexpr const char* kHostKey =
    "SYSTEM\\CurrentControlSet\\Control\\UUID\\5E0D2A47-93C1-4B8E-A6F2-1D7C3B9E8F40";
constexpr mode_t kMode = 0644;

std::vector<std::string> Split(std::string_view path) {
  std::vector<std::string> names;
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find('\\'));
    if (!name.empty()) names.emplace_back(name);
    path.remove_prefix(std::min(path.size(), name.size() + 1));
  }
  return names;
}

CRegistryNode::Pointer Ensure(CRegistryNode::Pointer node, const std::vector<std::string>& names) {
  for (const std::string& name : names) node = node->EnsureChild(name);
  return node;
}

void EnsureFixedKeys(const CRegistryNode::Pointer& top) {
  for (const char* root : kRootKeys) top->EnsureChild(root);
  Ensure(top->Child(kRootKeys[HKEY_LOCAL_MACHINE - 1]), Split(kHostKey));
}

bool HoldsSomething(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 && status.st_size > 0;
}

}  // namespace

CRegistry::CRegistry(std::string directory) : directory_(std::move(directory)) {
  for (const char* root : kRootKeys) HandleOf({root});
}

void CRegistry::InitClass() {
  const RecursiveGuard guard(lock_);
  EM_TRACE_ALWAYS(2, "\nCRegistry::InitClass");
  if (top_ != nullptr) EM_TRACE_ALWAYS(2, "CRegistry::InitClass() : re-initialize the registry-tree\n");
  top_ = std::make_shared<CRegistryNode>();
  EnsureFixedKeys(top_);
  isSetup_ = false;
  isDirty_ = false;
}

void CRegistry::Ready() {
  if (wasReady_) return;
  if (top_ == nullptr) InitClass();
  SetupTree(false);
}

std::string CRegistry::PathOf(const char* file) const {
  return directory_.empty() ? std::string() : directory_ + "/" + file;
}

bool CRegistry::SetupTree(bool forceSetup) {
  const RecursiveGuard guard(lock_);
  EM_TRACE_ALWAYS(2, "CRegistry: SetupTree(): ForceSetup=%d, MIsSetup=%d, MIsDirty=%d\n", forceSetup,
                  isSetup_, isDirty_);
  wasReady_ = true;
  if (!forceSetup && (isSetup_ || isDirty_)) return true;
  const std::string current = PathOf("registry");
  const std::string backup = PathOf("registry.old");
  const std::string delivered = PathOf("registry.default");
  if (Restore(current)) return true;
  EM_TRACE_ALWAYS(1, "CRegistry: WARNING: Could not restore tree from \"%s\", trying backup\n",
                  current.c_str());
  if (Restore(backup)) return true;
  EM_TRACE_ALWAYS(1, "CRegistry: WARNING: Could not restore tree from \"%s\", trying default\n",
                  backup.c_str());
  if (Restore(delivered)) return true;
  EM_TRACE_ALWAYS(1, "CRegistry: ERROR: Could not restore tree from \"%s\", restoring failed\n",
                  delivered.c_str());
  EM_TRACE_ALWAYS(2, "CRegistry: SetupTree(): ## ERROR during Setup\n");
  if (top_ == nullptr) InitClass();
  return false;
}

bool CRegistry::Restore(const std::string& path) {
  if (path.empty()) {
    EM_TRACE_ALWAYS(1, "CRegistry: ERROR: Empty file path");
    return false;
  }
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) {
    EM_TRACE_ALWAYS(1, "CRegistry: WARNING: Could not open \"%s\"\n", path.c_str());
    return false;
  }
  const std::string text = file.ReadToEnd();
  if (text.empty()) {
    EM_TRACE_ALWAYS(1, "CRegistry: WARNING: The length of \"%s\" is not sufficient\n", path.c_str());
    return false;
  }
  const auto top = std::make_shared<CRegistryNode>();
  if (ReadRegistryText(text, *top) == 0) {
    EM_TRACE_ALWAYS(
        1, "CRegistry: WARNING: Node restoring from \"%s\" failed - check the content of this file\n",
        path.c_str());
    return false;
  }
  EnsureFixedKeys(top);
  top_ = top;
  isSetup_ = true;
  isDirty_ = false;
  return true;
}

bool CRegistry::WriteNewFile(const std::string& path) {
  const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kMode));
  if (!file.IsOpen()) {
    EM_TRACE_ALWAYS(1, "CRegistry: ERROR: Cannot open \"%s\" for writing\n", path.c_str());
    return false;
  }
  // A file that takes the name of another must be whole on the disk before.
  if (file.Write(WriteRegistryText(*top_)) && ::fsync(file.Number()) == 0) return true;
  EM_TRACE_ALWAYS(1, "CRegistry: ERROR: Cannot write \"%s\"\n", path.c_str());
  return false;
}

bool CRegistry::SaveTree() {
  const RecursiveGuard guard(lock_);
  if (top_ == nullptr) return false;
  const std::string current = PathOf("registry");
  const std::string next = PathOf("registry.new");
  if (!WriteNewFile(next)) return false;
  if (HoldsSomething(current)) std::rename(current.c_str(), PathOf("registry.old").c_str());
  if (std::rename(next.c_str(), current.c_str()) != 0) {
    EM_TRACE_ALWAYS(1, "CRegistry: ERROR: Cannot rename \"%s\"\n", next.c_str());
    return false;
  }
  ::chmod(current.c_str(), kMode);
  isDirty_ = false;
  EM_TRACE_ALWAYS(2, "\nCRegistry::SaveTree MPRegistryTemp[%s] \t MPRegistry[%s]", next.c_str(),
                  current.c_str());
  return true;
}

CRegistry::Names CRegistry::NamesOf(RegistryHandle parent, const char* path) const {
  if (parent < 1 || static_cast<std::size_t>(parent) > keys_.size()) return {};
  Names names = keys_[static_cast<std::size_t>(parent) - 1];
  for (std::string& name : Split(OrEmpty(path))) names.push_back(std::move(name));
  return names;
}

CRegistryNode::Pointer CRegistry::Find(const Names& names) const {
  if (names.empty()) return nullptr;
  CRegistryNode::Pointer node = top_;
  for (const std::string& name : names) {
    if (node == nullptr) return nullptr;
    node = node->Child(name);
  }
  return node;
}

RegistryHandle CRegistry::HandleOf(const Names& names) {
  const auto [place, isNew] = handles_.try_emplace(names, static_cast<RegistryHandle>(keys_.size() + 1));
  if (isNew) keys_.push_back(names);
  return place->second;
}

RegistryHandle CRegistry::Open(RegistryHandle parent, const char* path) {
  const RecursiveGuard guard(lock_);
  EM_TRACE_ALWAYS(2, "\nCRegistry::Open \"%s\", hKey = %d\n", OrEmpty(path), parent);
  Ready();
  const Names names = NamesOf(parent, path);
  if (Find(names) == nullptr) {
    EM_TRACE_ALWAYS(2, "\nCRegistry::Open ##ERROR while opening !!!\n");
    return kNoRegistryKey;
  }
  return HandleOf(names);
}

RegistryHandle CRegistry::CreateKey(RegistryHandle parent, const char* path) {
  const RecursiveGuard guard(lock_);
  EM_TRACE_ALWAYS(2, "CRegistry::CreateKey \"%s\"\n", OrEmpty(path));
  Ready();
  const Names names = NamesOf(parent, path);
  if (names.empty() || names.size() > kDeepestRegistryKey) return kNoRegistryKey;
  if (!std::ranges::all_of(names, IsRegistryKeyName)) return kNoRegistryKey;
  if (Find(names) == nullptr) {
    Ensure(top_, names);
    isDirty_ = true;
  }
  return HandleOf(names);
}

CRegistryNode::Pointer CRegistry::OpenPointer(RegistryHandle parent, const char* path) {
  const RecursiveGuard guard(lock_);
  EM_TRACE_ALWAYS(2, "CRegistry::OpenPointer \"%s\"\n", OrEmpty(path));
  Ready();
  return Find(NamesOf(parent, path));
}

std::optional<RegistryValue> CRegistry::GetValue(RegistryHandle key, const char* name) {
  const RecursiveGuard guard(lock_);
  Ready();
  const CRegistryNode::Pointer node = Find(NamesOf(key, ""));
  std::optional<RegistryValue> value;
  if (node != nullptr) value = node->Value(OrEmpty(name));
  EM_TRACE_ALWAYS(4, "CRegistry::GetValue \"%s\" --> len %d\n", OrEmpty(name),
                  value ? static_cast<int>(value->Size()) : 0);
  return value;
}

bool CRegistry::QueryValue(RegistryHandle key, const char* name, RegistryType* type, void* data,
                           std::uint32_t* count) {
  if (count == nullptr) {
    EM_TRACE_ALWAYS(1, "CRegistry::QueryValue: ** ERROR **  pdwCount is a NULL pointer\n");
    return false;
  }
  const std::optional<RegistryValue> value = GetValue(key, name);
  if (!value) return false;
  if (type != nullptr) *type = value->Type();
  const std::uint32_t room = *count;
  *count = static_cast<std::uint32_t>(value->Size());
  if (data == nullptr) return true;
  if (room < *count) return false;
  value->CopyTo(data);
  return true;
}

bool CRegistry::SetValue(RegistryHandle key, const char* name, RegistryValue value) {
  const RecursiveGuard guard(lock_);
  EM_TRACE_ALWAYS(2, "CRegistry::SetValue \"%s\" %d %d\n", OrEmpty(name), static_cast<int>(value.Type()),
                  static_cast<int>(value.Size()));
  Ready();
  const CRegistryNode::Pointer node = Find(NamesOf(key, ""));
  if (node == nullptr || value.Type() == RegistryType::kKey || !IsRegistryValue(OrEmpty(name), value))
    return false;
  const void* const entry = node->SetValue(OrEmpty(name), std::move(value));
  isDirty_ = true;
  EM_TRACE_ALWAYS(2, "CRegistry::SetValue oEntry = %p\n", entry);
  return true;
}

bool CRegistry::DeleteValue(RegistryHandle key, const char* name) {
  const RecursiveGuard guard(lock_);
  EM_TRACE_ALWAYS(2, "CRegistry::DeleteValue \"%s\"\n", OrEmpty(name));
  Ready();
  const CRegistryNode::Pointer node = Find(NamesOf(key, ""));
  if (node == nullptr || !node->DeleteValue(OrEmpty(name))) return false;
  isDirty_ = true;
  return true;
}

bool CRegistry::DeleteKey(RegistryHandle parent, const char* path) {
  const RecursiveGuard guard(lock_);
  EM_TRACE_ALWAYS(2, "CRegistry::DeleteKey \"%s\"\n", OrEmpty(path));
  Ready();
  Names names = NamesOf(parent, path);
  if (Split(OrEmpty(path)).empty() || names.empty()) return false;
  const std::string name = std::move(names.back());
  names.pop_back();
  const CRegistryNode::Pointer node = Find(names);
  if (node == nullptr || !node->DeleteChild(name)) return false;
  isDirty_ = true;
  return true;
}

}  // namespace emstatus
