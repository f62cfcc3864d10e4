#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/configuration/IniFile.h"
#include "host/configuration/Rule.h"

namespace emstatus::host {

/// Of a problem in a configuration.
enum class Severity {
  /// Worth knowing; it does what it says.
  Note,
  /// It does something else than its text lets expect.
  Warning,
  /// The module refuses the file, or leaves out what it asks for.
  Error,
};

std::string_view WordOf(Severity severity);

struct Problem {
  Severity severity = Severity::Note;
  Rule place;
  std::string what;
  /// What to do about it.
  std::string advice;
};

/// Gathers the problems of one file. [one thread]
class Problems {
 public:
  explicit Problems(std::string file) : file_(std::move(file)) {}

  /// A place in the file. Without a key: the section; without a section: the line.
  struct Place {
    std::size_t line = 0;
    std::string section = {};
    std::string key = {};
  };

  void Error(Place place, std::string what, std::string advice) {
    Add(Severity::Error, std::move(place), std::move(what), std::move(advice));
  }
  void Warning(Place place, std::string what, std::string advice) {
    Add(Severity::Warning, std::move(place), std::move(what), std::move(advice));
  }
  void Note(Place place, std::string what, std::string advice) {
    Add(Severity::Note, std::move(place), std::move(what), std::move(advice));
  }

  /// By line, in one line as they were told.
  std::vector<Problem> InOrder() const;

 private:
  void Add(Severity severity, Place place, std::string what, std::string advice);

  std::string file_;
  std::vector<Problem> problems_;
};

/// The text in quotes; the middle of a long one is left out.
std::string Quoted(std::string_view text);

/// "did you mean X?" for the candidate that comes near to `name`, otherwise `otherwise`.
std::string DidYouMean(std::string_view name, const std::vector<std::string>& candidates,
                       const std::string& otherwise);

/// Where an entry stands; of a missing one, where its section begins.
Problems::Place PlaceOf(const IniFile& ini, const std::string& section, const std::string& key);

}  // namespace emstatus::host
