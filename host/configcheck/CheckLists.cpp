#include <algorithm>
#include <map>
#include <set>

#include "host/configcheck/Checks.h"

namespace emstatus::host {
namespace {

constexpr std::string_view kSubsystemPrefix = "Subsystem.";
constexpr std::string_view kComponentSection = "Component.";
constexpr std::string_view kAlternativeEnd = ".alt";

/// The names that the file has sections of, "Component.NAME".
std::vector<std::string> NamesOf(const IniFile& ini, std::string_view prefix) {
  std::vector<std::string> names;
  for (const IniSection& section : ini.Sections()) {
    if (section.name.starts_with(prefix)) {
      names.push_back(section.name.substr(prefix.size()));
    }
  }
  return names;
}

/// What is listed so far, with its place.
class Listed {
 public:
  Listed(const ConfigurationCheck& check, std::string_view prefix)
      : check_(check), prefix_(prefix), known_(NamesOf(check.ini, prefix)) {}

  void Take(const std::string& section, const std::string& key) {
    const Problems::Place place = PlaceOf(check_.ini, section, key);
    for (const std::string& name : SplitAtBlanks(check_.ini.Value(section, key).value_or(""))) {
      TakeName(place, name);
    }
  }

  bool Has(const std::string& name) const { return places_.contains(name); }
  const std::vector<std::string>& Known() const { return known_; }
  std::vector<std::string> InOrder() const { return order_; }

 private:
  void TakeName(const Problems::Place& place, const std::string& name) {
    const auto [earlier, isNew] = places_.try_emplace(name, place.line);
    if (!isNew) {
      check_.problems.Warning(place,
                              name + " is listed again, after line " + std::to_string(earlier->second) +
                                  ": it is asked twice in each scan",
                              "list it once");
      return;
    }
    order_.push_back(name);
    if (name.find('\t') != std::string::npos) {
      check_.problems.Error(place, Quoted(name) + " holds a tab, which does not separate names",
                            "put blanks between the names");
    } else if (!check_.ini.HasSection(prefix_ + name)) {
      check_.problems.Error(place,
                            "there is no section [" + prefix_ + name + "], so that " + name + " is left out",
                            DidYouMean(name, known_, "write the section, or take the name out"));
    }
  }

  const ConfigurationCheck& check_;
  std::string prefix_;
  std::vector<std::string> known_;
  std::map<std::string, std::size_t> places_;
  std::vector<std::string> order_;
};

void CheckSubsystem(const ConfigurationCheck& check, const std::string& name) {
  const std::string section = std::string(kSubsystemPrefix) + name;
  const IniSection* found = check.ini.FindSection(section);
  if (found == nullptr) {
    return;
  }
  if (!check.ini.Value(section, "DisplayName")) {
    check.problems.Error({found->line, section}, "it has no DisplayName, so that the subsystem is left out",
                         "write DisplayName=" + name);
  } else if (!check.ini.Value(section, "Components")) {
    check.problems.Error({found->line, section}, "it lists no Components, so that the subsystem is left out",
                         "write Components=, with names of [Component.NAME] sections");
  } else if (std::ranges::none_of(check.configuration.subsystems, [&](const ConfiguredSubsystem& subsystem) {
               return subsystem.name == name && !subsystem.components.empty();
             })) {
    check.problems.Warning(PlaceOf(check.ini, section, "Components"),
                           "none of them can be used, so that the subsystem is always empty",
                           "mend a component, or take the subsystem out");
  }
}

void CheckUnlisted(const ConfigurationCheck& check, const Listed& subsystems, const Listed& components) {
  for (const IniSection& section : check.ini.Sections()) {
    if (check.ini.FindSection(section.name) != &section) {
      continue;
    }
    const Problems::Place place{section.line, section.name};
    if (section.name.starts_with(kSubsystemPrefix) &&
        !subsystems.Has(section.name.substr(kSubsystemPrefix.size()))) {
      check.problems.Warning(place,
                             "Subsystems in [System] does not list it, so that nothing of it is watched",
                             "list it, or take the section out");
    }
    if (!section.name.starts_with(kComponentSection)) {
      continue;
    }
    std::string name = section.name.substr(kComponentSection.size());
    const bool isAlternative = name.ends_with(kAlternativeEnd);
    if (isAlternative && !components.Has(name)) {
      name.resize(name.size() - kAlternativeEnd.size());
    }
    if (!components.Has(name)) {
      check.problems.Warning(place,
                             isAlternative ? "it is the alternative of " + name + ", which no subsystem lists"
                                           : "no subsystem lists it, so that it is never asked",
                             "list " + name + " in Components of a subsystem, or take the section out");
    }
  }
}

void CheckListed(const ConfigurationCheck& check, const Listed& components) {
  std::set<std::string> checked;
  for (const std::string& listed : components.InOrder()) {
    for (const std::string& name : {listed, listed + std::string(kAlternativeEnd)}) {
      const auto found = check.configuration.components.find(name);
      if (found != check.configuration.components.end() && checked.insert(name).second) {
        CheckComponent(check, found->second);
      }
    }
  }
}

}  // namespace

void CheckLists(const ConfigurationCheck& check) {
  Listed subsystems(check, kSubsystemPrefix);
  Listed components(check, kComponentSection);
  subsystems.Take("System", "Subsystems");
  if (subsystems.InOrder().empty()) {
    check.problems.Error(PlaceOf(check.ini, "System", "Subsystems"),
                         "it lists no subsystems, so that nothing is watched",
                         "write Subsystems=, with names of [Subsystem.NAME] sections");
  }
  if (!check.ini.Value("System", "DisplayName") && check.ini.HasSection("System")) {
    check.problems.Note(PlaceOf(check.ini, "System", "DisplayName"), "the system has no name",
                        "write DisplayName=Server");
  }
  for (const std::string& name : subsystems.InOrder()) {
    CheckSubsystem(check, name);
    if (check.ini.Value(std::string(kSubsystemPrefix) + name, "DisplayName")) {
      components.Take(std::string(kSubsystemPrefix) + name, "Components");
    }
  }
  if (components.InOrder().size() > Configuration::kMostComponents) {
    check.problems.Error(PlaceOf(check.ini, "System", "Subsystems"),
                         "more than " + std::to_string(Configuration::kMostComponents) +
                             " components are listed; those behind them are left out",
                         "list fewer");
  }
  CheckUnlisted(check, subsystems, components);
  CheckListed(check, components);
}

}  // namespace emstatus::host
