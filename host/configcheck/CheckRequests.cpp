#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "host/configcheck/Checks.h"
#include "host/configuration/Placeholders.h"
#include "host/machine/Numbering.h"

namespace emstatus::host {
namespace {

constexpr std::uint32_t kLargestNumber = 0xFFFF;
constexpr std::array<std::string_view, 5> kRequestAttributes = {"Context", "OC", "OE", "OI", "CA"};

enum class Wanted { Number, Text };

std::string Hex(std::uint32_t number) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%04X", number);
  return text.data();
}

bool IsText(Question question) {
  switch (question) {
    case Question::Name:
    case Question::ReadingText:
    case Question::Reason:
    case Question::ClassName:
    case Question::Advice:
      return true;
    default:
      return false;
  }
}

/// One request of a component, well-formed or not.
class RequestCheck {
 public:
  RequestCheck(const ConfigurationCheck& check, const Definition& definition,
               const ConfiguredRequest& request, Wanted wanted)
      : check_(check),
        definition_(definition),
        request_(request),
        wanted_(wanted),
        place_{request.line, definition.section, request.key} {}

  void Run() const {
    if (request_.line == 0) {
      return;
    }
    const IniEntry& entry = *check_.ini.Find(definition_.section, request_.key);
    CheckPlaceholders(entry.value);
    if (!request_.element) {
      Malformed(entry);
      return;
    }
    if (request_.element->name != "CMD") {
      check_.problems.Error(
          place_, "the element is <" + request_.element->name + ">, not <CMD>: the request is not sent",
          "write <CMD Context=\"TRIQ\" OC=\"...\" OE=\"...\"/>");
      return;
    }
    CheckAttributes();
    CheckContext();
    CheckNumbers();
  }

 private:
  void CheckPlaceholders(const std::string& value) const {
    for (std::size_t at = value.find('%'); at < value.size(); at = value.find('%', at + 1)) {
      const auto name = PlaceholderAt(value, at);
      if (!name) {
        check_.problems.Warning(place_, "a \"%\" begins no complete %NAME% and stays as it is",
                                "write %NAME%, or %% for a percent sign");
        return;
      }
      if (!name->empty() && !check_.configuration.variables.contains(*name)) {
        std::vector<std::string> names;
        for (const auto& [variable, text] : check_.configuration.variables) {
          names.push_back(variable);
        }
        check_.problems.Error(place_,
                              "there is no variable " + std::string(*name) + ", which stands for nothing",
                              DidYouMean(*name, names, "write it into [EnvironmentVariables]"));
      }
      at += name->size() + 1;
    }
  }

  void Malformed(const IniEntry& entry) const {
    if (entry.value.empty()) {
      return;
    }
    check_.problems.Error(
        place_, "it is no well-formed element (" + request_.problem + "): the request is not sent",
        entry.comment.empty() ? "write <CMD Context=\"TRIQ\" OC=\"...\" OE=\"...\"/>"
                              : "the semicolon behind it begins a comment; no value can hold one");
  }

  void CheckAttributes() const {
    for (const auto& [name, value] : request_.element->attributes) {
      if (std::ranges::find(kRequestAttributes, name) == kRequestAttributes.end()) {
        check_.problems.Warning(
            place_, "the attribute " + name + " is not looked at",
            DidYouMean(name, {kRequestAttributes.begin(), kRequestAttributes.end()}, "take it out"));
      }
    }
  }

  void CheckContext() const {
    const std::string* context = request_.element->Attribute("Context");
    const bool isStatus = request_.key == "StatusRequest";
    if (context == nullptr || (*context != "TRIQ" && !(isStatus && *context == "SNMP"))) {
      check_.problems.Error(place_,
                            (context == nullptr ? "the Context is missing"
                                                : "the Context is " + Quoted(*context) + ", not \"TRIQ\"") +
                                std::string(": the request is not sent"),
                            "write Context=\"TRIQ\"");
    }
  }

  void CheckNumbers() const {
    bool isPlain = true;
    for (const char* name : {"OC", "OE", "OI", "CA"}) {
      isPlain = CheckHex(name) && isPlain;
    }
    const auto code = request_.element->HexNumber("OC");
    const auto extension = request_.element->HexNumber("OE");
    for (const auto& [number, name] : {std::pair(code, "OC"), std::pair(extension, "OE")}) {
      if (!number) {
        check_.problems.Warning(place_, std::string("it has no ") + name + ", so that 0000 is sent",
                                "docs/HOST.md lists the numbers");
        isPlain = false;
      }
    }
    if (isPlain) {
      CheckNumbering(*code, *extension);
    }
  }

  /// False when the attribute is there and no number.
  bool CheckHex(const char* name) const {
    const std::string* text = request_.element->Attribute(name);
    if (text == nullptr) {
      return true;
    }
    char* end = nullptr;
    errno = 0;
    const unsigned long number = std::strtoul(text->c_str(), &end, 16);
    if (text->empty() || end == text->c_str() || *end != '\0') {
      check_.problems.Error(place_,
                            std::string(name) + "=" + Quoted(*text) + " is no hexadecimal number; " +
                                Hex(request_.element->HexNumber(name).value_or(0)) + " is sent",
                            "write up to four digits of 0 to 9 and A to F");
      return false;
    }
    if (number > kLargestNumber) {
      check_.problems.Error(place_,
                            std::string(name) + "=" + Quoted(*text) + " does not fit: FFFF is the largest",
                            "write up to four hexadecimal digits");
      return false;
    }
    return true;
  }

  void CheckNumbering(std::uint32_t code, std::uint32_t extension) const {
    const ClassRow* row = FindClass(code);
    const auto question = FindQuestion(extension);
    if (row == nullptr) {
      check_.problems.Warning(place_, "emhost knows no class OC " + Hex(code) + ", so that it never answers",
                              "docs/HOST.md lists the classes; for another host this may be right");
      return;
    }
    if (!question) {
      check_.problems.Warning(place_,
                              "emhost knows no question OE " + Hex(extension) + ", so that it never answers",
                              "docs/HOST.md lists the questions; for another host this may be right");
      return;
    }
    CheckQuestion(*question);
    CheckObject(*row, *question);
    CheckData(*question);
    CheckClass(*row);
  }

  void CheckQuestion(Question question) const {
    const std::string word(WordOf(question));
    if ((wanted_ == Wanted::Text) != IsText(question)) {
      check_.problems.Error(place_,
                            "\"" + word + "\" is answered with a " + (IsText(question) ? "text" : "number") +
                                ", and a " + (IsText(question) ? "number" : "text") + " is needed",
                            "ask another OE; docs/HOST.md lists them");
      return;
    }
    const auto expect = [&](const char* key, Question right) {
      if (request_.key == key && question != right) {
        check_.problems.Warning(
            place_, "it asks for \"" + word + "\", not for \"" + std::string(WordOf(right)) + "\"",
            "write OE=\"" + Hex(static_cast<std::uint32_t>(right)) + "\"");
      }
    };
    expect("NrInstancesRequest", Question::Count);
    expect("StatusConfirm", Question::Confirm);
    expect("CssRequest", Question::CustomerServiceable);
    expect("RedundancyRequest", Question::Redundancy);
    if (question == Question::Confirm && request_.key != "StatusConfirm") {
      check_.problems.Error(place_, "each scan would confirm faults that nobody has seen",
                            "ask another OE; docs/HOST.md lists them");
    }
  }

  static bool IsAboutAClass(Question question) {
    return question == Question::Count || question == Question::ClassName || question == Question::Confirm;
  }

  void CheckObject(const ClassRow& row, Question question) const {
    const std::uint32_t object = request_.element->HexNumber("OI").value_or(0);
    const bool isNumbered = definition_.HasNumberedInstances();
    if (request_.element->Attribute("CA") != nullptr && request_.key != "StatusConfirm") {
      check_.problems.Note(place_, "the cabinet that is asked takes the place of CA", "take CA out");
    }
    if (IsAboutAClass(question)) {
      return;
    }
    if (object >= kFirstNamedObject && isNumbered) {
      check_.problems.Warning(place_,
                              "the number of the instance takes the place of OI=\"" + Hex(object) + "\"",
                              "name an object only in a component without a number of instances");
    } else if (object >= kFirstNamedObject &&
               (!request_.element->data || request_.element->data->type != "string")) {
      check_.problems.Error(
          place_, "OI=\"" + Hex(object) + "\" asks for the object that the data names, but no text is there",
          "write <DATA Type=\"string\">its name</DATA> into the element");
    } else if (!isNumbered && object < row.firstIndex) {
      check_.problems.Error(place_,
                            "objects of the class \"" + std::string(row.word) + "\" count from " +
                                std::to_string(row.firstIndex) + ": there is no object " + Hex(object),
                            "write OI=\"" + Hex(row.firstIndex) + "\"");
    } else if (isNumbered && request_.key == "StatusRequest" &&
               definition_.instanceBaseIndex != row.firstIndex) {
      check_.problems.Error(place_,
                            "objects of the class \"" + std::string(row.word) + "\" count from " +
                                std::to_string(row.firstIndex) + ", but instances from " +
                                std::to_string(definition_.instanceBaseIndex),
                            "write InstanceBaseIndex=" + std::to_string(row.firstIndex));
    }
  }

  void CheckData(Question question) const {
    const auto& data = request_.element->data;
    const bool needsLimit = question == Question::StateAbove || question == Question::StateBelow;
    if (needsLimit && (!data || data->type != "int")) {
      check_.problems.Error(place_,
                            "\"" + std::string(WordOf(question)) + "\" needs a number to compare with",
                            "write <DATA Type=\"int\">90</DATA> into the element");
    }
    if (!data) {
      return;
    }
    if (data->type != "int" && data->type != "string") {
      check_.problems.Error(place_, "the data's Type is " + Quoted(data->type) + ": nothing is sent of it",
                            "write Type=\"int\" or Type=\"string\"");
    } else if (data->type == "int") {
      char* end = nullptr;
      errno = 0;
      static_cast<void>(std::strtoll(data->text.c_str(), &end, 0));
      if (end == data->text.c_str() || *end != '\0' || errno != 0) {
        check_.problems.Error(place_, "the data " + Quoted(data->text) + " is no whole number",
                              "write a whole number alone");
      }
    }
  }

  void CheckClass(const ClassRow& row) const {
    if (request_.key == "StatusRequest" || !definition_.statusRequest.IsDefined()) {
      return;
    }
    const ClassRow* asked = FindClass(definition_.statusRequest.element->HexNumber("OC").value_or(0));
    if (asked != nullptr && asked != &row) {
      check_.problems.Warning(place_,
                              "it asks the class \"" + std::string(row.word) + "\", the StatusRequest \"" +
                                  std::string(asked->word) + "\"",
                              "write OC=\"" + Hex(static_cast<std::uint32_t>(asked->objectClass)) + "\"");
    }
  }

  const ConfigurationCheck& check_;
  const Definition& definition_;
  const ConfiguredRequest& request_;
  const Wanted wanted_;
  const Problems::Place place_;
};

}  // namespace

void CheckRequests(const ConfigurationCheck& check, const Definition& definition) {
  for (const auto& [request, wanted] : {std::pair(&definition.displayNameRequest, Wanted::Text),
                                        std::pair(&definition.statusRequest, Wanted::Number),
                                        std::pair(&definition.cssRequest, Wanted::Number),
                                        std::pair(&definition.nrInstancesRequest, Wanted::Number),
                                        std::pair(&definition.redundancyRequest, Wanted::Number),
                                        std::pair(&definition.designationRequest, Wanted::Text),
                                        std::pair(&definition.targetHostRequest, Wanted::Text),
                                        std::pair(&definition.statusConfirm, Wanted::Number)}) {
    RequestCheck(check, definition, *request, wanted).Run();
  }
}

}  // namespace emstatus::host
