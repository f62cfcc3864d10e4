#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <map>
#include <span>
#include <string_view>

#include "host/configcheck/Checks.h"
#include "host/machine/Numbering.h"

namespace emstatus::host {
namespace {

/// The module's number of the status "good".
constexpr std::uint32_t kCountsAsGood = 1;

struct RawMeaning {
  std::int32_t raw;
  const char* word;
};

constexpr RawMeaning kStates[] = {
    {0, "good"},          {1, "warning"},      {2, "failed"},    {10, "late"},
    {11, "sensor fault"}, {12, "implausible"}, {13, "inactive"}, {14, "lost"},
};
/// Against a limit of the configuration nothing is ever "failed".
constexpr RawMeaning kStatesByLimit[] = {
    {0, "good"},         {1, "warning"},   {10, "late"}, {11, "sensor fault"},
    {12, "implausible"}, {13, "inactive"}, {14, "lost"},
};
constexpr RawMeaning kQualities[] = {
    {0, "good"}, {1, "late"}, {2, "sensor fault"}, {3, "implausible"}, {4, "inactive"}, {5, "lost"},
};
constexpr RawMeaning kRedundancies[] = {
    {0, "no group"},
    {1, "full"},
    {2, "reduced"},
    {3, "insufficient"},
};
constexpr RawMeaning kTruths[] = {{0, "no"}, {1, "yes"}};

/// Every raw value with which emhost answers a request; empty when it is unknown or any number.
std::span<const RawMeaning> AnswersTo(const ConfiguredRequest& request) {
  if (!request.IsDefined() || FindClass(request.element->HexNumber("OC").value_or(0)) == nullptr) {
    return {};
  }
  const auto question = FindQuestion(request.element->HexNumber("OE").value_or(0));
  if (!question) {
    return {};
  }
  switch (*question) {
    case Question::State:
      return kStates;
    case Question::StateAbove:
    case Question::StateBelow:
      return kStatesByLimit;
    case Question::Quality:
      return kQualities;
    case Question::Redundancy:
      return kRedundancies;
    case Question::CustomerServiceable:
      return kTruths;
    default:
      return {};
  }
}

Problems::Place PlaceOfEntry(const Definition& definition, const MapEntry& entry) {
  return {entry.line, definition.section, entry.key};
}

/// What is wrong with the raw word of an entry; true when it can be used.
bool CheckRaw(const ConfigurationCheck& check, const Definition& definition, const MapEntry& entry,
              bool mayBeForOthers) {
  const Problems::Place place = PlaceOfEntry(definition, entry);
  if (!entry.rest.empty()) {
    check.problems.Warning(place, Quoted(entry.rest) + " behind the raw value is not looked at",
                           "take it out; each raw value needs an entry of its own");
  }
  if (!entry.number && !(mayBeForOthers && entry.IsForOthers())) {
    check.problems.Error(
        place,
        entry.raw.empty() ? std::string("the raw value is missing, so that the entry is left out")
                          : Quoted(entry.raw) + " is no raw value, so that the entry is left out",
        mayBeForOthers ? "write a decimal number, or * for all others" : "write a decimal number");
    return false;
  }
  if (!entry.number) {
    if (entry.raw.size() > 1) {
      check.problems.Warning(place, Quoted(entry.raw) + " is read as *", "write * alone");
    }
    return true;
  }
  const std::size_t sign = entry.raw.starts_with('-') ? 1 : 0;
  errno = 0;
  const long number = std::strtol(entry.raw.c_str(), nullptr, 10);
  if (errno != 0 || number != static_cast<long>(*entry.number)) {
    check.problems.Error(
        place, entry.raw + " does not fit into 32 bits; " + std::to_string(*entry.number) + " is used",
        "write a smaller number");
  } else if (entry.raw.find_first_not_of("0123456789", sign) != std::string::npos) {
    check.problems.Warning(place, Quoted(entry.raw) + " is read as " + std::to_string(*entry.number),
                           "write a decimal number alone");
  }
  return true;
}

void CheckStatusTarget(const ConfigurationCheck& check, const Definition& definition, const MapEntry& entry) {
  if (check.configuration.statusValues.contains(entry.target)) {
    return;
  }
  std::vector<std::string> words;
  for (const auto& [word, value] : check.configuration.statusValues) {
    words.push_back(word);
  }
  check.problems.Error(
      PlaceOfEntry(definition, entry),
      entry.target.empty()
          ? std::string("it has no value and is left out")
          : Quoted(entry.target) + " is no status of [StatusMapping], so that the entry is left out",
      DidYouMean(entry.target, words, "write STATUS RAW, with a status of [StatusMapping]"));
}

void CheckShadow(const ConfigurationCheck& check, const Definition& definition, std::size_t index) {
  const MapEntry& entry = definition.statusEntries[index];
  const Problems::Place place = PlaceOfEntry(definition, entry);
  if (!check.configuration.statusValues.contains(entry.target)) {
    return;
  }
  if (entry.IsForOthers()) {
    if (definition.otherStatus && definition.otherStatus->entry != index) {
      const MapEntry& winner = definition.statusEntries[definition.otherStatus->entry];
      check.problems.Warning(place,
                             "it cannot be reached: of entries for *, the last counts, " + winner.key +
                                 " in line " + std::to_string(winner.line),
                             "take one of them out");
    }
    return;
  }
  const auto mapping = entry.number ? definition.statusMap.find(*entry.number) : definition.statusMap.end();
  if (mapping == definition.statusMap.end()) {
    return;
  }
  if (*entry.number == -1) {
    check.problems.Warning(place, "it cannot be reached: the raw state -1 always has the status 0",
                           "take it out");
  } else if (mapping->second.entry != index) {
    const MapEntry& winner = definition.statusEntries[mapping->second.entry];
    check.problems.Warning(place,
                           "it cannot be reached: " + winner.key + " in line " + std::to_string(winner.line) +
                               " has the raw state " + std::to_string(*entry.number) + " already",
                           "take one of them out");
  }
}

/// Nothing is known of such a part, or nothing good.
bool IsFarFromGood(std::string_view word) {
  constexpr std::string_view kWords[] = {"failed", "late", "sensor fault", "implausible", "lost"};
  return std::ranges::find(kWords, word) != std::end(kWords);
}

void CheckStates(const ConfigurationCheck& check, const Definition& definition) {
  const auto answers = AnswersTo(definition.statusRequest);
  if (answers.empty() || definition.statusMap.empty()) {
    return;
  }
  std::string uncovered;
  for (const RawMeaning& answer : answers) {
    const auto* mapping = definition.Find(answer.raw);
    if (mapping != nullptr && mapping->value == kCountsAsGood && IsFarFromGood(answer.word)) {
      check.problems.Note(
          PlaceOfEntry(definition, definition.statusEntries[mapping->entry]),
          "a part with the raw state " + std::to_string(answer.raw) + " (" + answer.word + ") counts as good",
          "give it another status, unless this is meant");
    }
    if (mapping == nullptr) {
      uncovered += (uncovered.empty() ? "" : ", ") + std::to_string(answer.raw) + " (" + answer.word + ")";
    }
  }
  if (!uncovered.empty()) {
    check.problems.Warning({definition.line, definition.section},
                           "emhost also answers " + uncovered +
                               ", which no entry maps: the status is 0 then, "
                               "and what is wrong does not show",
                           "write an entry for each, or Status.Other=NAME *");
  }
  for (const auto& [raw, mapping] : definition.statusMap) {
    if (raw != -1 && std::ranges::find(answers, raw, &RawMeaning::raw) == answers.end()) {
      check.problems.Note(PlaceOfEntry(definition, definition.statusEntries[mapping.entry]),
                          "emhost never answers " + std::to_string(raw) + " here", "take it out");
    }
  }
}

void CheckRedundancyEntry(const ConfigurationCheck& check, const Definition& definition, std::size_t index) {
  const MapEntry& entry = definition.redundancyEntries[index];
  const Problems::Place place = PlaceOfEntry(definition, entry);
  if (!CheckRaw(check, definition, entry, false)) {
    return;
  }
  if (entry.target.find_first_not_of("0123456789-") != std::string::npos) {
    check.problems.Warning(
        place,
        Quoted(entry.target) + " is no number and is read as " + std::to_string(DecimalNumber(entry.target)),
        "write 1 when the fault is covered, 0 when it is not");
  }
  const Definition::Mapping& mapping = definition.redundancyMap.at(*entry.number);
  if (mapping.entry != index) {
    const MapEntry& winner = definition.redundancyEntries[mapping.entry];
    check.problems.Warning(place,
                           "it cannot be reached: " + winner.key + " in line " + std::to_string(winner.line) +
                               " has the redundancy " + std::to_string(*entry.number) + " already",
                           "take one of them out");
  }
}

void CheckRedundancies(const ConfigurationCheck& check, const Definition& definition) {
  const auto answers = AnswersTo(definition.redundancyRequest);
  const auto isCovered = [&](RedundancyState state) {
    const auto found = definition.redundancyMap.find(static_cast<std::int32_t>(state));
    return found != definition.redundancyMap.end() && found->second.value != 0;
  };
  if (answers.data() != std::data(kRedundancies) || definition.redundancyEntries.empty()) {
    return;
  }
  if (!isCovered(RedundancyState::Reduced)) {
    check.problems.Warning(
        PlaceOf(check.ini, definition.section, "RedundancyRequest"),
        "emhost answers 2 (reduced) while the group still does its work, which no entry covers",
        "write Redundancy.Reduced=1 2");
  }
  for (const RedundancyState state : {RedundancyState::None, RedundancyState::Insufficient}) {
    if (isCovered(state)) {
      const auto& mapping = definition.redundancyMap.at(static_cast<std::int32_t>(state));
      check.problems.Warning(PlaceOfEntry(definition, definition.redundancyEntries[mapping.entry]),
                             "it covers a fault where emhost says \"" + std::string(WordOf(state)) + "\"",
                             "take it out");
    }
  }
  for (const auto& [raw, mapping] : definition.redundancyMap) {
    if (std::ranges::find(answers, raw, &RawMeaning::raw) == answers.end()) {
      check.problems.Note(PlaceOfEntry(definition, definition.redundancyEntries[mapping.entry]),
                          "emhost never answers the redundancy " + std::to_string(raw), "take it out");
    }
  }
}

}  // namespace

void CheckMaps(const ConfigurationCheck& check, const Definition& definition) {
  for (std::size_t i = 0; i < definition.statusEntries.size(); ++i) {
    CheckStatusTarget(check, definition, definition.statusEntries[i]);
    if (!definition.statusEntries[i].target.empty()) {
      CheckRaw(check, definition, definition.statusEntries[i], true);
    }
    CheckShadow(check, definition, i);
  }
  CheckStates(check, definition);
  for (std::size_t i = 0; i < definition.redundancyEntries.size(); ++i) {
    CheckRedundancyEntry(check, definition, i);
  }
  CheckRedundancies(check, definition);
}

}  // namespace emstatus::host
