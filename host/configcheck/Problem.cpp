#include "host/configcheck/Problem.h"

#include <algorithm>
#include <set>
#include <utility>

#include "host/configuration/NearestName.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kLongestQuoted = 80;

}  // namespace

std::string_view WordOf(Severity severity) {
  switch (severity) {
    case Severity::Error:
      return "error";
    case Severity::Warning:
      return "warning";
    case Severity::Note:
      break;
  }
  return "note";
}

void Problems::Add(Severity severity, Place place, std::string what, std::string advice) {
  problems_.push_back({severity,
                       {file_, place.line, std::move(place.section), std::move(place.key)},
                       std::move(what),
                       std::move(advice)});
}

std::vector<Problem> Problems::InOrder() const {
  std::vector<Problem> sorted;
  std::set<std::pair<std::size_t, std::string>> told;
  for (const Problem& problem : problems_) {
    // What is listed twice is looked at twice.
    if (told.emplace(problem.place.line, problem.place.key + "\n" + problem.what).second) {
      sorted.push_back(problem);
    }
  }
  std::ranges::stable_sort(sorted, {}, [](const Problem& problem) { return problem.place.line; });
  return sorted;
}

std::string Quoted(std::string_view text) {
  if (text.size() <= kLongestQuoted) {
    return "\"" + std::string(text) + "\"";
  }
  const std::string_view begin = text.substr(0, kLongestQuoted / 2);
  const std::string_view end = text.substr(text.size() - kLongestQuoted / 2);
  return "\"" + std::string(begin) + "..." + std::string(end) + "\"";
}

std::string DidYouMean(std::string_view name, const std::vector<std::string>& candidates,
                       const std::string& otherwise) {
  const std::string nearest = NearestName(name, candidates);
  return nearest.empty() ? otherwise : "did you mean " + nearest + "?";
}

Problems::Place PlaceOf(const IniFile& ini, const std::string& section, const std::string& key) {
  if (const IniEntry* entry = ini.Find(section, key)) {
    return {entry->line, section, key};
  }
  const IniSection* found = ini.FindSection(section);
  return {found == nullptr ? 1 : found->line, section, key};
}

}  // namespace emstatus::host
