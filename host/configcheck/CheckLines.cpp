#include <algorithm>

#include "host/configcheck/Checks.h"
#include "host/configuration/NearestName.h"

namespace emstatus::host {
namespace {

const KnownSection* FindKnown(const std::vector<KnownSection>& known, const std::string& name) {
  for (const KnownSection& section : known) {
    const bool isPrefix = section.name.ends_with('.');
    if (isPrefix ? name.starts_with(section.name) && name != section.name : name == section.name) {
      return &section;
    }
  }
  return nullptr;
}

bool IsPlainNumber(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789xXabcdefABCDEF-") == std::string::npos;
}

void CheckPhysicalLines(const IniFile& ini, Problems& problems) {
  for (const IniLongLine& line : ini.LongLines()) {
    problems.Warning({line.line},
                     "the line has " + std::to_string(line.length) +
                         " characters: what stands behind each 1023rd is taken for a line of its own",
                     "make it shorter; parts of a request can go into a variable");
  }
  for (const std::size_t line : ini.ZeroByteLines()) {
    problems.Warning({line}, "the line holds a zero byte, and what stands behind it is not read",
                     "save the file as plain text (UTF-8)");
  }
}

void CheckHeader(const IniFile& ini, const std::vector<KnownSection>& known, const IniSection& section,
                 Problems& problems) {
  const std::size_t close = section.header.find(']');
  if (close == std::string::npos || section.header.find(';') < close) {
    problems.Error(
        {section.line},
        "the header " + Quoted(section.header) + " does not end in \"]\": its section is never read",
        "write [Name], without a semicolon in it");
    return;
  }
  const std::string rest = section.header.substr(close + 1);
  const std::size_t begin = rest.find_first_not_of(" \t\r");
  if (begin != std::string::npos && rest[begin] != ';') {
    problems.Warning({section.line, section.name},
                     "what stands behind \"]\" is passed over: " + Quoted(rest.substr(begin)),
                     "write it on a line of its own");
  }
  const IniSection* first = ini.FindSection(section.name);
  if (first != &section) {
    problems.Warning(
        {section.line, section.name},
        "this section stands here again; only the one in line " + std::to_string(first->line) + " is read",
        "move its lines there, or take them out");
  } else if (FindKnown(known, section.name) == nullptr) {
    std::vector<std::string> names;
    for (const KnownSection& row : known) {
      // Of a section with a name of its own, the beginning may be misspelt.
      const std::size_t dot = section.name.find('.');
      const bool isPrefix = row.name.ends_with('.') && dot != std::string::npos;
      names.push_back(isPrefix ? row.name + section.name.substr(dot + 1) : row.name);
    }
    problems.Warning({section.line, section.name}, "unknown section, which nothing reads",
                     DidYouMean(section.name, names, "take it out"));
  }
}

bool IsKnownKey(const KnownSection& known, const std::string& key) {
  return known.isFree || std::ranges::find(known.keys, key) != known.keys.end() ||
         std::ranges::any_of(known.prefixes,
                             [&](const std::string& prefix) { return key.starts_with(prefix); });
}

/// A key "Statu.Good" was to begin as a known one does.
std::string KeyAdvice(const KnownSection& known, const std::string& key) {
  std::vector<std::string> names = known.keys;
  const std::size_t dot = std::min(key.find('.'), key.size());
  for (const std::string& prefix : known.prefixes) {
    names.push_back(prefix + key.substr(std::min(dot + 1, key.size())));
  }
  return DidYouMean(key, names, "take it out");
}

void CheckEntry(const KnownSection& known, const IniSection& section, const IniEntry& entry,
                Problems& problems) {
  const Problems::Place place{entry.line, section.name, entry.key};
  if (entry.key.empty()) {
    problems.Error(place, "there is no key before \"=\"; where keys are free, those behind it are not read",
                   "name it, or take the line out");
    return;
  }
  const IniEntry& first = section.entries[section.firstOf.at(entry.key)];
  if (&first != &entry) {
    problems.Warning(place,
                     "this key stands here again; only line " + std::to_string(first.line) +
                         " counts, with " + Quoted(first.value),
                     "take one of them out");
    return;
  }
  if (!IsKnownKey(known, entry.key)) {
    problems.Warning(place, "unknown key, which nothing reads", KeyAdvice(known, entry.key));
    return;
  }
  if (entry.isCutWithin && !IsPlainNumber(entry.value)) {
    problems.Warning(place,
                     "a semicolon cuts the value; " + Quoted(entry.comment) + " is taken for a comment",
                     "no value can hold a semicolon; put a blank before a comment");
  } else if (entry.value.empty() && !known.isFree) {
    problems.Note(place, "it has no value and counts as missing", "give it one, or take the line out");
  }
}

void CheckEntries(const KnownSection& known, const IniSection& section, Problems& problems) {
  std::size_t length = 0;
  for (const IniEntry& entry : section.entries) {
    CheckEntry(known, section, entry, problems);
    length += entry.key.size() + 1;
  }
  if (length > IniFile::kLongestKeyList) {
    problems.Error({section.line, section.name},
                   "the names of its keys take " + std::to_string(length) + " bytes together, more than " +
                       std::to_string(IniFile::kLongestKeyList) + ": none of its free keys is read",
                   "give it fewer or shorter keys");
  }
}

}  // namespace

void CheckLines(const IniFile& ini, const std::vector<KnownSection>& known, Problems& problems) {
  CheckPhysicalLines(ini, problems);
  for (const IniSection& section : ini.Sections()) {
    for (const IniStray& stray : section.strays) {
      problems.Warning({stray.line},
                       Quoted(stray.text) + " is neither a [Section] nor Key=value, and is passed over",
                       "write Key=value, or a semicolon before it");
    }
    if (section.header.empty()) {
      for (const IniEntry& entry : section.entries) {
        problems.Warning({entry.line, {}, entry.key},
                         "it stands before the first section, where nothing is read",
                         "move it into its section");
      }
      continue;
    }
    CheckHeader(ini, known, section, problems);
    const KnownSection* row = FindKnown(known, section.name);
    if (row != nullptr && ini.FindSection(section.name) == &section) {
      CheckEntries(*row, section, problems);
    }
  }
}

const std::vector<KnownSection>& ConfigurationSections() {
  static const std::vector<KnownSection> kKnown = {
      {.name = "Info", .keys = {"Filename", "LayoutVersion"}, .prefixes = {}},
      {.name = "Configuration",
       .keys = {"InitialPollingDelaySeconds", "PollingRateSeconds", "AdvancedPollingRateSeconds",
                "AdvancedPollingCycles", "StatusValueQueryFail", "StatusValueUndefinedMapping"},
       .prefixes = {}},
      {.name = "StatusMapping", .keys = {}, .isFree = true, .prefixes = {}},
      {.name = "EnvironmentVariables", .keys = {}, .isFree = true, .prefixes = {}},
      {.name = "EnvironmentVariables.Linux", .keys = {}, .isFree = true, .prefixes = {}},
      {.name = "System", .keys = {"DisplayName", "Subsystems"}, .prefixes = {}},
      {.name = "Subsystem.", .keys = {"DisplayName", "Components"}, .prefixes = {}},
      {.name = "Component.",
       .keys = {"DisplayName", "DisplayNameRequest", "InstanceName", "Category", "Source", "ObjectName",
                "StatusRequest", "NrInstancesRequest", "NrInstances", "InstanceBaseIndex", "HandleCabinets",
                "DesignationRequest", "CssRequest", "RedundancyRequest", "TargetHostRequest",
                "StatusConfirm"},
       .prefixes = {"Status.", "Redundancy."}},
  };
  return kKnown;
}

}  // namespace emstatus::host
