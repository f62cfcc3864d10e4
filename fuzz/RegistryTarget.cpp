// The registry file: what was read is saved so that it reads again, and paths in it are followed.
// The input is the file.

#include "fuzz/Check.h"
#include "fuzz/ScratchDirectory.h"
#include "lookup/ModuleConfigFile.h"
#include "platform/CRegistry.h"
#include "platform/RegistryFile.h"

namespace emstatus::fuzz {
namespace {

/// Every entry of `expected` that a file can hold is in `found`, in order, and nothing else.
void CheckEqual(const CRegistryNode& expected, const CRegistryNode& found, std::size_t depth) {
  EM_FUZZ_CHECK(depth <= kDeepestRegistryKey);
  auto values = expected.Values();
  std::erase_if(values, [](const auto& value) { return !IsRegistryValue(value.first, value.second); });
  EM_FUZZ_CHECK(values == found.Values());
  auto children = expected.Children();
  std::erase_if(children, [](const auto& child) { return !IsRegistryKeyName(child.first); });
  const auto foundChildren = found.Children();
  EM_FUZZ_CHECK(children.size() == foundChildren.size());
  for (std::size_t i = 0; i < children.size(); ++i) {
    EM_FUZZ_CHECK(children[i].first == foundChildren[i].first);
    CheckEqual(*children[i].second, *foundChildren[i].second, depth + 1);
  }
}

void CheckText(std::string_view text) {
  CRegistryNode first;
  ReadRegistryText(text, first);
  const std::string written = WriteRegistryText(first);
  CRegistryNode second;
  ReadRegistryText(written, second);
  CheckEqual(first, second, 0);
  EM_FUZZ_CHECK(WriteRegistryText(second) == written);
}

/// The same through files: a save, and another one of what it reads as.
void CheckFiles(const ScratchDirectory& directory, std::string_view text) {
  directory.Write("registry", text);
  // Of the input before this one.
  directory.Write("registry.old", "");
  CRegistry registry(directory.Path());
  if (!registry.SetupTree(true)) EM_FUZZ_CHECK(registry.OpenPointer(HKEY_USERS, "") != nullptr);
  EM_FUZZ_CHECK(registry.SaveTree());
  const std::string saved = directory.Read("registry");
  CRegistry again(directory.Path());
  EM_FUZZ_CHECK(again.SetupTree(true));
  EM_FUZZ_CHECK(again.SaveTree());
  EM_FUZZ_CHECK(directory.Read("registry") == saved);
  EM_FUZZ_CHECK(directory.Read("registry.old") == saved);
}

void CheckLookUp(const ScratchDirectory& directory) {
  CRegistry registry(directory.Path());
  ModuleConfigFile lookUp(registry);
  std::string path;
  EM_FUZZ_CHECK(lookUp.GetModuleConfigFile("EM_STATUS", path, "ini") == !path.empty());
  std::int32_t number = 5;
  lookUp.GetModuleProperty("EM_STATUS", "Level", number);
  // The registry may give a path that is none.
  if (!lookUp.SetModuleProperty("EM_STATUS", "Level", 4)) return;
  EM_FUZZ_CHECK(lookUp.GetModuleProperty("EM_STATUS", "Level", number) && number == 4);
}

}  // namespace
}  // namespace emstatus::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace emstatus::fuzz;
  static const ScratchDirectory directory;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  CheckText(text);
  CheckFiles(directory, text);
  CheckLookUp(directory);
  return 0;
}
