#include "config/RequestString.h"

#include "config/Placeholders.h"
#include "markup/MarkupReader.h"
#include "platform/CDebugClient.h"
#include "platform/ProfileFile.h"

namespace emstatus {

bool IsRequestString(std::string_view text) {
  return text.starts_with("<CMD");
}

bool ReadRequestString(ProfileFile& profile, const std::string& section, const char* key, const char* label,
                       const ConfigVariables& variables, RequestRecord& record) {
  record = {};
  std::string text;
  profile.GetString(text, section.c_str(), key, "");
  if (text.empty()) return false;
  EM_TRACE(4, "\nEM_STATUS           :     query string: \"%s\"", text.c_str());
  if (text.find('%') != std::string::npos) {
    text = ExpandVariables(text, variables);
    EM_TRACE(4, "\nEM_STATUS           :     query string after environment variable expansion: \"%s\"",
             text.c_str());
  }
  auto document = ReadMarkup(text);
  if (!document || document->name != "CMD") {
    EM_TRACE(1, "\n\nEM_STATUS (ReadCfg) : ## ERROR! Illegal %s string (missing CMD tag): %s", label,
             text.c_str());
    return false;
  }
  EM_TRACE(3, "\nEM_STATUS           :   command for \"%s\":  %s", label, text.c_str());
  record.command = std::move(*document);
  record.text = std::move(text);
  return true;
}

}  // namespace emstatus
