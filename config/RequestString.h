#pragma once

#include <map>
#include <string>
#include <string_view>

#include "markup/Element.h"

namespace emstatus {

class ProfileFile;

/// Values of configuration variables by name.
using ConfigVariables = std::map<std::string, std::string, std::less<>>;

/// A host request as the configuration gives it: a CMD element and its text. Empty when its key is missing
/// or holds something else.
struct RequestRecord {
  /// After the expansion of configuration variables.
  std::string text;
  Element command;

  bool IsDefined() const { return !command.name.empty(); }
};

/// Whether `text` begins as a request string does, with "<CMD".
bool IsRequestString(std::string_view text);

/// Reads the request string under `key` into `record`, expanding `variables`; `label` names it in traces.
/// False, and an empty record, when there is none or it is not a CMD element (which is traced).
bool ReadRequestString(ProfileFile& profile, const std::string& section, const char* key, const char* label,
                       const ConfigVariables& variables, RequestRecord& record);

}  // namespace emstatus
