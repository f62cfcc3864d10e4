#pragma once

#include <cstdint>
#include <string>

#include "config/ComponentDefinition.h"
#include "config/StatusConfiguration.h"

namespace emstatus {

class ProfileFile;

/// Reads "Component." sections. Needs the status names of `configuration` and the configuration variables,
/// both read before. Every look-up scans the file, so that what one configuration may ask for is bounded.
class ComponentReader {
 public:
  ComponentReader(ProfileFile& profile, const StatusConfiguration& configuration,
                  const ConfigVariables& variables)
      : profile_(profile), configuration_(configuration), variables_(variables) {}

  /// Reads the section of `componentName` into `definition`, which must be fresh. True when it is usable: a
  /// display name and at least one map entry. What is wrong is traced.
  bool ReadComponentEntry(const std::string& componentName, ComponentDefinition& definition);

 private:
  std::string Text(const char* key);
  bool Request(const char* key, const char* label, RequestRecord& record);
  bool ReadDisplayName(ComponentDefinition& definition);
  void ReadCategory(ComponentDefinition& definition);
  void ReadTexts(ComponentDefinition& definition);
  void ReadNumbers(ComponentDefinition& definition);
  void ReadRequests(ComponentDefinition& definition);
  void ReadQueryContext(ComponentDefinition& definition);
  void ReadMapEntries(ComponentDefinition& definition);

  ProfileFile& profile_;
  const StatusConfiguration& configuration_;
  const ConfigVariables& variables_;
  std::string section_;
  /// Map entries read so far.
  std::uint32_t entries_ = 0;
};

}  // namespace emstatus
