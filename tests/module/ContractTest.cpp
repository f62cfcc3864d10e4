// The binary contract, slot by slot: hosts and sinks are compiled apart from the module.

#include <gtest/gtest.h>

#include <cstring>

#include <emstatus/CIExtensionModule.h>
#include <emstatus/HostInterface.h>
#include <emstatus/ModuleInfo.h>
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
      SLOT(3, HostInterface, Reserved3),
      SLOT(4, HostInterface, Reserved4),
      SLOT(5, HostInterface, Reserved5),
      SLOT(6, HostInterface, Reserved6),
      SLOT(7, HostInterface, Reserved7),
      SLOT(8, HostInterface, Reserved8),
      SLOT(9, HostInterface, SendCommand),
      SLOT(10, HostInterface, SendRequest),
      SLOT(11, HostInterface, SendEvent),
      SLOT(12, HostInterface, SetModuleState),
      SLOT(13, HostInterface, ModuleStopping),
      SLOT(14, HostInterface, Reserved14),
      SLOT(15, HostInterface, Reserved15),
      SLOT(16, HostInterface, Reserved16),
      SLOT(17, HostInterface, Reserved17),
      SLOT(18, HostInterface, Reserved18),
      SLOT(19, HostInterface, Reserved19),
      SLOT(20, HostInterface, Reserved20),
      SLOT(21, HostInterface, Reserved21),
      SLOT(22, HostInterface, Reserved22),
      SLOT(23, HostInterface, Reserved23),
      SLOT(24, HostInterface, Reserved24),
      SLOT(25, HostInterface, Reserved25),
      SLOT(26, HostInterface, Reserved26),
      SLOT(27, HostInterface, SendToModule),
      SLOT(28, HostInterface, HostKind),
      SLOT(3, TraceSink, IsSink),
      SLOT(4, TraceSink, Reserved4),
      SLOT(5, TraceSink, Reserved5),
      SLOT(6, TraceSink, Reserved6),
      SLOT(7, TraceSink, Reserved7),
      SLOT(8, TraceSink, Print),
      SLOT(9, TraceSink, FilteredPrint),
  };
  for (const Slot& slot : slots) EXPECT_EQ(slot.found, slot.expected) << slot.name;
}

TEST(ContractTest, EveryFieldIsAtItsOffset) {
  const Slot fields[] = {
      {0, offsetof(CommandValue, object), "object"},
      {0, offsetof(CommandValue, floatNumber), "floatNumber"},
      {16, offsetof(CommandValue, tag), "tag"},
      {24, sizeof(CommandValue), "CommandValue"},
      {0, offsetof(CommandObject, members), "members"},
      {8, offsetof(CommandObject, count), "count"},
      {12, offsetof(CommandObject, capacity), "capacity"},
      {8, offsetof(CommandArray, count), "count"},
      {12, offsetof(CommandArray, capacity), "capacity"},
      {8, offsetof(CommandString, length), "length"},
      {24, offsetof(CommandMember, value), "value"},
      {48, sizeof(CommandMember), "CommandMember"},
      {24, offsetof(HostCommand, current), "current"},
      {32, sizeof(HostCommand), "HostCommand"},
      {8, offsetof(ModuleInfo, capabilities8), "capabilities8"},
      {21, offsetof(ModuleInfo, capabilities21), "capabilities21"},
      {26, offsetof(ModuleInfo, number26), "number26"},
      {42, offsetof(ModuleInfo, number42), "number42"},
      {46, offsetof(ModuleInfo, name), "name"},
      {142, offsetof(ModuleInfo, word142), "word142"},
      {144, offsetof(ModuleInfo, byte144), "byte144"},
      {145, offsetof(ModuleInfo, byte145), "byte145"},
      {146, offsetof(ModuleInfo, description), "description"},
      {242, offsetof(ModuleInfo, word242), "word242"},
      {244, offsetof(ModuleInfo, byte244), "byte244"},
      {245, offsetof(ModuleInfo, byte245), "byte245"},
      {246, sizeof(ModuleInfo), "ModuleInfo"},
  };
  for (const Slot& field : fields) EXPECT_EQ(field.found, field.expected) << field.name;
}

}  // namespace
}  // namespace emstatus::test
