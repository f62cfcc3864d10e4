// Requests and replies to the whole module, started and scanned once by a friendly host, with documents of
// any shape. The input is what the host answers to a confirm command, and the documents.

#include <algorithm>
#include <iterator>

#include "data/Command.h"
#include "data/JsonWriter.h"
#include "fuzz/Check.h"
#include "fuzz/HostileConfiguration.h"
#include "fuzz/ScratchDirectory.h"
#include "fuzz/ValueFromBytes.h"
#include "module/EM_Status.h"

namespace emstatus::fuzz {
namespace {

/// Ones while the module scans; afterwards whatever the input says.
class Host final : public HostInterface {
 public:
  ByteSource* source = nullptr;

  void SendCommand(CIExtensionModule*, HostCommand&, std::uint32_t) override {}
  bool SendRequest(CIExtensionModule* module, HostCommand& command, std::uint32_t) override {
    if (source != nullptr) {
      AnswerFromBytes(*source, command);
    } else {
      // The last command of a scan.
      if (GetInt(command, "OC", 0) == 0x1033) module->OnNotification(HWN_SWITCH_SHUTDOWN, 0, nullptr);
      SetDataWord(command, 1);
    }
    return true;
  }
  void SendEvent(CIExtensionModule*, HostCommand&) override {}
  bool SetModuleState(CIExtensionModule*, bool) override { return true; }
  bool ModuleStopping(CIExtensionModule*) override { return true; }
  bool SendToModule(CIExtensionModule*, HostCommand&, std::uint32_t, std::uint32_t) override { return false; }
  std::uint32_t HostKind(CIExtensionModule*) override { return 5; }
};

/// What the data of a successful answer is; none: a status without data.
enum class Answer { kNone, kNumber, kText, kRaw, kBoolean };

struct Operation {
  std::uint32_t code;
  Answer answer;
};

constexpr Operation kOperations[] = {
    {0x2300, Answer::kNumber},  {0x2301, Answer::kNumber}, {0x2302, Answer::kText},
    {0x2304, Answer::kText},    {0x2305, Answer::kNumber}, {0x2306, Answer::kNumber},
    {0x2307, Answer::kText},    {0x2308, Answer::kText},   {0x2309, Answer::kNumber},
    {0x230A, Answer::kNone},    {0x230B, Answer::kRaw},    {0x230F, Answer::kNumber},
    {0x2310, Answer::kText},    {0x2311, Answer::kText},   {0x2312, Answer::kNumber},
    {0x2313, Answer::kText},    {0x2314, Answer::kRaw},    {0x2320, Answer::kNumber},
    {0x2321, Answer::kText},    {0x2322, Answer::kNumber}, {0x2323, Answer::kRaw},
    {0x2324, Answer::kText},    {0x2330, Answer::kNumber}, {0x2331, Answer::kText},
    {0x2332, Answer::kText},    {0x2333, Answer::kNumber}, {0x2334, Answer::kRaw},
    {0x2335, Answer::kText},    {0x2336, Answer::kNumber}, {0x2337, Answer::kText},
    {0x2338, Answer::kBoolean}, {0x2339, Answer::kText},
};

bool Fits(Answer answer, const CommandValue& data) {
  switch (answer) {
    case Answer::kNone:
      return true;
    case Answer::kNumber:
      return KindOf(data) == CommandKind::Number;
    case Answer::kText:
      return data.tag == tag::kOwnedString && data.string.text[data.string.length] == '\0';
    case Answer::kRaw:
      return KindOf(data) == CommandKind::Object && FindMember(data, "RAW") != nullptr;
    case Answer::kBoolean:
      return KindOf(data) == CommandKind::True || KindOf(data) == CommandKind::False;
  }
  return false;
}

bool IsStatus(std::uint32_t status) {
  return status <= 2 || status == 6 || status == 19;
}

void Request(EM_Status& module, HostCommand& command) {
  const std::uint32_t code = GetInt(command, "OC", 0);
  const auto* operation = std::ranges::find(kOperations, code, &Operation::code);
  const bool known = operation != std::end(kOperations);
  const std::string before = JsonText(command.document);
  EM_FUZZ_CHECK(module.OnRequest(command) == known);
  const std::string after = JsonText(command.document);
  if (CurrentCommand(command) == nullptr) {
    EM_FUZZ_CHECK(after == before);
    return;
  }
  const std::uint32_t status = GetInt(command, "ST", kStatusAbsent);
  EM_FUZZ_CHECK(known ? IsStatus(status) : status == 1);
  if (known && status == 0) EM_FUZZ_CHECK(Fits(operation->answer, Data(command)));
}

void Reply(EM_Status& module, HostCommand& command) {
  const std::string before = JsonText(command.document);
  module.OnReply(command);
  EM_FUZZ_CHECK(JsonText(command.document) == before);
}

EM_Status& StartedModule(Host& host) {
  const ScratchDirectory directory;
  const EnteredDirectory entered(directory);
  directory.Write("EM_STATUS.ini", kHostileConfiguration);
  static EM_Status module;
  module.SetCabNr(1);
  EM_FUZZ_CHECK(module.Start(&host, 0));
  module.StartThreads();
  module.Stop();
  return module;
}

}  // namespace
}  // namespace emstatus::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace emstatus::fuzz;
  static Host host;
  static emstatus::EM_Status& module = StartedModule(host);
  ByteSource source(data, size);
  const std::string_view answers = source.Text();
  for (int left = 64; left > 0 && !source.IsEmpty(); --left) {
    ByteSource answer(reinterpret_cast<const std::uint8_t*>(answers.data()), answers.size());
    host.source = &answer;
    const bool isReply = source.Byte() >= 0xC0;
    emstatus::OwnedCommand command = CommandFromBytes(source);
    isReply ? Reply(module, command) : Request(module, command);
  }
  return 0;
}
