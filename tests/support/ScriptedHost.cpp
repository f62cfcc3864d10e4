#include "tests/support/ScriptedHost.h"

#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <stdexcept>

#include "data/Command.h"
#include "data/JsonWriter.h"
#include "tests/support/TraceCapture.h"

namespace emstatus::test {
namespace {

constexpr const char* kFields[] = {"OC", "OE", "OI", "CA"};

OwnedValue AnswerData(const std::string& form, std::istringstream& words) {
  if (form == "number") {
    long long number = 0;
    words >> number;
    return OwnedValue::Integer(number);
  }
  if (form == "text") {
    std::string text;
    std::getline(words >> std::ws, text);
    return OwnedValue::Text(text);
  }
  if (form == "raw") {
    std::vector<std::uint8_t> bytes;
    for (int byte = 0; words >> byte;) bytes.push_back(static_cast<std::uint8_t>(byte));
    return OwnedValue::Raw(bytes);
  }
  if (form == "true") return OwnedValue::Boolean(true);
  if (form == "null") return OwnedValue();
  throw std::runtime_error("unknown answer: " + form);
}

}  // namespace

ScriptedHost::ScriptedHost(std::string_view script) {
  std::istringstream lines{std::string(script)};
  for (std::string line; std::getline(lines, line);) {
    line.erase(std::min(line.find('#'), line.size()));
    if (line.find(':') != std::string::npos) rules_.push_back(ParseRule(line));
  }
}

ScriptedHost::Rule ScriptedHost::ParseRule(const std::string& line) {
  const std::size_t colon = line.find(':');
  std::istringstream words(line.substr(0, colon));
  Rule rule;
  rule.lastScan = INT_MAX;
  rule.answer = line.substr(colon + 1);
  std::string pattern;
  std::string scans;
  words >> pattern >> scans;
  std::istringstream fields(pattern);
  std::string field;
  for (auto& wanted : rule.wanted) {
    if (std::getline(fields, field, '-') && field != "*") {
      wanted = static_cast<std::uint32_t>(std::stoul(field, nullptr, 16));
    }
  }
  if (!scans.empty() && std::sscanf(scans.c_str(), "@%d-%d", &rule.firstScan, &rule.lastScan) == 1) {
    rule.lastScan = rule.firstScan;
  }
  return rule;
}

void ScriptedHost::SendCommand(CIExtensionModule*, HostCommand& command, std::uint32_t) {
  Log("command " + JsonText(command.document));
}

bool ScriptedHost::SendRequest(CIExtensionModule*, HostCommand& command, std::uint32_t timeoutMs) {
  EXPECT_EQ(timeoutMs, 5000U);
  const std::uint32_t operation = GetInt(command, "OC", 0);
  int scan = 0;
  {
    const std::lock_guard guard(lock_);
    if (operation == 0x1030) ++scan_;
    scan = scan_;
  }
  Log("request " + JsonText(command.document));
  if (onRequest) onRequest(operation, scan);
  Answer(command);
  return false;
}

void ScriptedHost::Answer(HostCommand& command) {
  const std::lock_guard guard(lock_);
  for (const Rule& rule : rules_) {
    bool fits = scan_ >= rule.firstScan && scan_ <= rule.lastScan;
    for (std::size_t i = 0; i < std::size(kFields); ++i) {
      fits = fits && (!rule.wanted[i] || *rule.wanted[i] == GetInt(command, kFields[i], 0));
    }
    if (!fits) continue;
    std::istringstream words(rule.answer);
    std::string form;
    words >> form;
    if (form == "status") {
      std::uint32_t status = 0;
      words >> status;
      SetStatus(command, status);
    } else {
      SetData(command, AnswerData(form, words));
    }
    return;
  }
  SetStatus(command, 1);
}

void ScriptedHost::SendEvent(CIExtensionModule*, HostCommand& command) {
  Log("event " + JsonText(command.document));
}

bool ScriptedHost::SetModuleState(CIExtensionModule*, bool state) {
  Log(state ? "module state true" : "module state false");
  return true;
}

bool ScriptedHost::ModuleStopping(CIExtensionModule*) {
  Log("module stopping");
  return true;
}

bool ScriptedHost::SendToModule(CIExtensionModule*, HostCommand& command, std::uint32_t, std::uint32_t) {
  Log("to module " + JsonText(command.document));
  return true;
}

std::uint32_t ScriptedHost::HostKind(CIExtensionModule*) {
  return kind;
}

void ScriptedHost::Log(const std::string& what) {
  Trace().Note("@ " + what);
}

}  // namespace emstatus::test
