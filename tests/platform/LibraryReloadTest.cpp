#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include "tests/support/TraceCapture.h"

namespace emstatus::test {
namespace {

void LoadUseUnload() {
  void* const library = dlopen(EM_RELOADED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  auto* const use = reinterpret_cast<bool (*)()>(dlsym(library, "UseLibrary"));
  ASSERT_NE(use, nullptr);
  EXPECT_TRUE(use());
  ASSERT_EQ(dlclose(library), 0);
  ASSERT_EQ(dlopen(EM_RELOADED_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr)
      << "something keeps the library loaded";
  EXPECT_EQ(Trace().Take().size(), 1U);
}

TEST(Library, LeavesNothingBehindWhenItIsUnloaded) {
  // The allocator's own caches count as used until they are full.
  for (int i = 0; i < 30; ++i) LoadUseUnload();
  const std::size_t before = mallinfo2().uordblks;
  for (int i = 0; i < 100; ++i) LoadUseUnload();
  EXPECT_EQ(mallinfo2().uordblks, before);
}

}  // namespace
}  // namespace emstatus::test
