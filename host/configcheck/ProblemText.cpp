#include "host/configcheck/ProblemText.h"

#include <algorithm>

#include "host/machine/Utf8.h"

namespace emstatus::host {
namespace {

/// For one line of a terminal, whatever stands in the file.
std::string OnOneLine(std::string text) {
  std::ranges::replace_if(
      text, [](unsigned char letter) { return letter < ' ' || letter == 0x7F; }, '?');
  return CleanUtf8(text);
}

std::string SubjectOf(const Rule& place) {
  if (place.section.empty()) {
    return place.key.empty() ? "" : place.key + ": ";
  }
  return (place.key.empty() ? "" : place.key + " in ") + "[" + place.section + "]: ";
}

}  // namespace

std::string TextOf(const Problem& problem, const std::string& path) {
  return OnOneLine(path + ":" + std::to_string(problem.place.line) + ": " +
                   std::string(WordOf(problem.severity)) + ": " + SubjectOf(problem.place) + problem.what +
                   "; " + problem.advice);
}

nlohmann::ordered_json ProblemsJson(const std::vector<Problem>& problems) {
  auto list = nlohmann::ordered_json::array();
  for (const Problem& problem : problems) {
    list.push_back({{"File", CleanUtf8(problem.place.file)},
                    {"Line", problem.place.line},
                    {"Section", CleanUtf8(problem.place.section)},
                    {"Key", CleanUtf8(problem.place.key)},
                    {"Severity", WordOf(problem.severity)},
                    {"What", CleanUtf8(problem.what)},
                    {"Advice", CleanUtf8(problem.advice)}});
  }
  return list;
}

std::string Summary(const std::vector<Problem>& problems) {
  std::string text;
  for (const Severity severity : {Severity::Error, Severity::Warning, Severity::Note}) {
    const auto count = std::ranges::count(problems, severity, &Problem::severity);
    if (count != 0) {
      text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + std::string(WordOf(severity)) +
              (count == 1 ? "" : "s");
    }
  }
  return text.empty() ? "no problems" : text;
}

}  // namespace emstatus::host
