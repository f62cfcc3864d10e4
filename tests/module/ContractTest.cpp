// The binary contract, slot by slot: hosts and sinks are compiled apart from the module. Sizes and offsets
// are asserted where they are declared, in sdk/.

#include <gtest/gtest.h>

#include <cstring>

#include <emstatus/CIExtensionModule.h>
#include <emstatus/HostInterface.h>
#include <emstatus/TraceSink.h>

namespace emstatus::test {
namespace {

/// Position of a virtual operation in its class's table, from 1 (Itanium C++ ABI: a pointer to a virtual
/// member is its offset in the table plus one).
template <typename Member>
std::size_t SlotOf(Member member) {
  std::uintptr_t offset = 0;
  std::memcpy(&offset, &member, sizeof offset);
  return (offset - 1) / sizeof(void*) + 1;
}

struct Slot {
  std::size_t expected;
  std::size_t found;
  const char* name;
};

#define SLOT(number, type, operation) \
  { number, SlotOf(&type::operation), #operation }

TEST(ContractTest, EverySlotIsInItsPlace) {
  const Slot slots[] = {
      SLOT(3, CIExtensionModule, GetModuleInfo),
      SLOT(4, CIExtensionModule, HostHook1),
      SLOT(5, CIExtensionModule, Start),
      SLOT(6, CIExtensionModule, Stop),
      SLOT(7, CIExtensionModule, StartThreads),
      SLOT(8, CIExtensionModule, OnReply),
      SLOT(9, CIExtensionModule, OnRequest),
      SLOT(10, CIExtensionModule, HostHook2),
      SLOT(11, CIExtensionModule, SetCabNr),
      SLOT(12, CIExtensionModule, HostHook3),
      SLOT(13, CIExtensionModule, SetServerSeList),
      SLOT(14, CIExtensionModule, OnNotification),
      SLOT(15, CIExtensionModule, GetModuleName),
      SLOT(16, CIExtensionModule, HostHook4),
      SLOT(17, CIExtensionModule, HostHook5),
      SLOT(18, CIExtensionModule, HostHook6),
      SLOT(19, CIExtensionModule, HostHook7),
      SLOT(20, CIExtensionModule, HostHook8),
      SLOT(21, CIExtensionModule, HostHook9),
      SLOT(22, CIExtensionModule, HostHook10),
      SLOT(23, CIExtensionModule, HostHook11),
      SLOT(24, CIExtensionModule, OnModuleNotification),
      SLOT(9, HostInterface, SendCommand),
      SLOT(10, HostInterface, SendRequest),
      SLOT(11, HostInterface, SendEvent),
      SLOT(12, HostInterface, SetModuleState),
      SLOT(13, HostInterface, ModuleStopping),
      SLOT(27, HostInterface, SendToModule),
      SLOT(28, HostInterface, HostKind),
      SLOT(3, TraceSink, IsSink),
      SLOT(8, TraceSink, Print),
      SLOT(9, TraceSink, FilteredPrint),
  };
  for (const Slot& slot : slots) EXPECT_EQ(slot.found, slot.expected) << slot.name;
}

}  // namespace
}  // namespace emstatus::test
