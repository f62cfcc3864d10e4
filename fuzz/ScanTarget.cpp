// Scans against a host that answers what it likes: whatever it says, the tree that is published is a tree.
// The input is the cabinets, the first cycle and the answers.

#include "data/Command.h"
#include "data/CommandReply.h"
#include "fuzz/ByteSource.h"
#include "fuzz/Check.h"
#include "fuzz/HostileConfiguration.h"
#include "fuzz/ScannedSystem.h"
#include "fuzz/ValueFromBytes.h"

namespace emstatus::fuzz {
namespace {

/// Counts above this cost time and show nothing new, up to those that are refused.
constexpr std::int32_t kCountMask = 0x0F;

/// The first count that is refused as an answer to `operation`; 0 when it asks for no count.
std::int32_t RefusedCount(std::uint32_t operation) {
  switch (operation) {
    case 0x1030:
      return 257;
    case 0x106:
    case 0x10B:
    case 0x110:
      return 65537;
    default:
      return 0;
  }
}

void Answer(ByteSource& source, HostCommand& command) {
  const std::int32_t refused = RefusedCount(GetInt(command, "OC", 0));
  AnswerFromBytes(source, command);
  const std::int32_t count = ReadReply(command).number.value_or(0);
  if (count > kCountMask && count < refused) {
    SetDataWord(command, static_cast<std::uint32_t>(count & kCountMask));
  }
}

}  // namespace
}  // namespace emstatus::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace emstatus::fuzz;
  static const emstatus::StatusConfiguration kConfiguration = ConfigurationOf(kHostileConfiguration);
  ByteSource source(data, size);
  ScannedSystem system([&source](emstatus::HostCommand& command) { Answer(source, command); });
  system.configuration.Replace(kConfiguration);
  for (std::uint32_t left = source.Below(4); left > 0; --left) {
    system.cabinets.Append(source.Number<std::uint16_t>());
  }
  const std::uint32_t first = source.Below(4);
  system.requestsLeft = source.Flag() ? source.Byte() : 500;
  for (std::uint32_t cycle = first; cycle < first + 3 && !source.IsEmpty(); ++cycle) system.Scan(cycle);
  system.AskEverything();
  return 0;
}
