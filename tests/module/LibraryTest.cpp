// The built library, from outside: what it exports and needs, and that it comes and goes without a trace.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <emstatus/EntryPoints.h>
#include <emstatus/ModuleInfo.h>

#include "tests/support/TraceCapture.h"

namespace emstatus::test {
namespace {

std::string OutputOf(const std::string& command) {
  std::string output;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return output;
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) output += static_cast<char>(c);
  EXPECT_EQ(pclose(pipe), 0) << command;
  return output;
}

/// The library while it is loaded.
class Library {
 public:
  Library() : handle_(dlopen(EM_MODULE_PATH, RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) throw std::runtime_error(dlerror());
  }
  ~Library() { dlclose(handle_); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  template <typename Function>
  Function* Get(const char* name) const {
    void* symbol = dlsym(handle_, name);
    EXPECT_NE(symbol, nullptr) << name;
    return reinterpret_cast<Function*>(symbol);
  }

  bool Create(CIExtensionModule*& module) const {
    return Get<bool(CIExtensionModule**, std::uintptr_t)>("EM_Create")(&module, 0);
  }
  int Delete() const { return Get<int()>("EM_Delete")(); }

 private:
  void* handle_;
};

TEST(LibraryTest, ExportsTheFourFunctionsOnly) {
  std::set<std::string> names;
  std::istringstream lines(OutputOf("nm -D --defined-only '" EM_MODULE_PATH "'"));
  for (std::string address, kind, name; lines >> address >> kind >> name;) names.insert(name);
  EXPECT_EQ(names, (std::set<std::string>{"EM_Create", "EM_Delete", "EM_GetModuleName", "EM_SetupAction"}));
}

TEST(LibraryTest, NeedsTheStandardLibrariesOnly) {
#ifdef EM_SANITIZED
  GTEST_SKIP() << "a sanitizer brings its own library";
#endif
  const std::set<std::string> allowed = {"libc.so.6", "libm.so.6", "libstdc++.so.6", "libgcc_s.so.1"};
  std::istringstream lines(OutputOf("readelf -d '" EM_MODULE_PATH "' | grep NEEDED"));
  int needed = 0;
  for (std::string line; std::getline(lines, line); ++needed) {
    const std::string name = line.substr(line.find('[') + 1, line.find(']') - line.find('[') - 1);
    EXPECT_TRUE(allowed.contains(name)) << name;
  }
  EXPECT_GT(needed, 0);
}

TEST(LibraryTest, ComesAndGoesAHundredTimes) {
  const auto threads = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
  };
  // A sanitizer brings a thread of its own with the first that is started.
  std::thread([] {}).join();
  const auto before = threads();
  for (int i = 0; i < 100; ++i) {
    const Library library;
    CIExtensionModule* module = nullptr;
    ASSERT_TRUE(library.Create(module));
    ASSERT_STREQ(module->GetModuleName(), "EM_STATUS");
    if (i % 10 == 0) {
      // Without a file the first scan is a minute away: the thread is there and ends at once.
      module->Start(nullptr, 0);
      module->StartThreads();
      module->OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
      module->Stop();
    }
    ASSERT_EQ(library.Delete(), 1);
  }
  EXPECT_EQ(dlopen(EM_MODULE_PATH, RTLD_NOW | RTLD_NOLOAD), nullptr) << "the library stays loaded";
  // The kernel takes an ended thread off its list a moment after it was joined.
  for (int i = 0; i < 1000 && threads() != before; ++i) std::this_thread::yield();
  EXPECT_EQ(threads(), before);
}

TEST(LibraryTest, HandsOutOneModule) {
  setenv("QX_LOG_DEBUG_LEVEL", "2", 1);
  const Library library;
  EXPECT_STREQ(library.Get<const char*()>("EM_GetModuleName")(), "EM_STATUS");
  CIExtensionModule* first = nullptr;
  CIExtensionModule* second = nullptr;
  Trace().Take();
  EXPECT_EQ(library.Delete(), 0);
  EXPECT_TRUE(library.Create(first));
  EXPECT_TRUE(library.Create(second));
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(first, second);
  EXPECT_EQ(library.Delete(), 1);
  EXPECT_EQ(library.Delete(), 0);
  const std::vector<std::string> expected = {
      "\nEM DLL (EM_STATUS ) : Module already destroyed!",
      "\nEM DLL (EM_STATUS ) : Create module",
      "\nEM DLL (EM_STATUS ) : ## ERROR: Module already existing!\n",
      "\nEM DLL (EM_STATUS ) : Destroy module...",
      "\nEM DLL (EM_STATUS ) : .. Module destroyed successfully!",
      "\nEM DLL (EM_STATUS ) : Module already destroyed!",
  };
  EXPECT_EQ(Trace().Take(), expected);
}

TEST(LibraryTest, AnswersSetupActionsWithoutAModule) {
  setenv("QX_LOG_DEBUG_LEVEL", "1", 1);
  const Library library;
  Trace().Take();
  auto* setup = library.Get<int(std::uint32_t)>("EM_SetupAction");
  for (std::uint32_t action = 0; action < 6; ++action) EXPECT_EQ(setup(action), 1);
  const auto done = [](const char* name) {
    return "\n\nEM_STATUS           : ## Setup action \"" + std::string(name) +
           "\" call - no action function defined\n";
  };
  const auto unknown = [](const char* code) {
    return "\n\nEM_STATUS           : ## ERROR! Setup action call with unknown action type (" +
           std::string(code) + ") - no action defined!\n";
  };
  const std::vector<std::string> expected = {unknown("0"),    done("BACKUP"),  done("RESTORE"),
                                             done("CONVERT"), done("CLEANUP"), unknown("5")};
  EXPECT_EQ(Trace().Take(), expected);
}

TEST(LibraryTest, FillsTheModuleInfo) {
  const Library library;
  CIExtensionModule* module = nullptr;
  ASSERT_TRUE(library.Create(module));
  ModuleInfo info;
  std::memset(&info, 0x54, sizeof info);
  info.size = 245;
  ModuleInfo untouched = info;
  EXPECT_FALSE(module->GetModuleInfo(&info));
  EXPECT_EQ(std::memcmp(&info, &untouched, sizeof info), 0);
  EXPECT_FALSE(module->GetModuleInfo(nullptr));
  info.size = 246;
  EXPECT_TRUE(module->GetModuleInfo(&info));
  EXPECT_EQ(info.capabilities8, 0x57);
  EXPECT_EQ(info.capabilities21, 0x57);
  EXPECT_EQ(std::uint32_t{info.number26}, 100U);
  EXPECT_EQ(std::uint32_t{info.number42}, 2U);
  EXPECT_EQ(std::string(info.name, sizeof info.name), std::string("EM_STATUS") + std::string(87, '\0'));
  EXPECT_EQ(std::string(info.description, sizeof info.description),
            std::string("STATUS extension module") + std::string(73, '\0'));
  EXPECT_EQ(info.word142 | info.byte144 | info.byte145 | info.word242 | info.byte244 | info.byte245, 0);
  for (const auto& reserved : {std::pair{info.reserved4, sizeof info.reserved4},
                               {info.reserved9, sizeof info.reserved9},
                               {info.reserved22, sizeof info.reserved22},
                               {info.reserved30, sizeof info.reserved30}}) {
    for (std::size_t i = 0; i < reserved.second; ++i) EXPECT_EQ(reserved.first[i], 0x54);
  }
  EXPECT_EQ(library.Delete(), 1);
}

}  // namespace
}  // namespace emstatus::test
