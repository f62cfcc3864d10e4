#pragma once

#include <cstddef>
#include <string>

#include "host/configuration/Configuration.h"
#include "host/configuration/Definition.h"
#include "host/configuration/IniFile.h"

namespace emstatus::host {

/// Reads "Component." sections. Needs the status names and the variables of `configuration`, both read
/// before.
class DefinitionReader {
 public:
  DefinitionReader(const IniFile& ini, const Configuration& configuration)
      : ini_(ini), configuration_(configuration) {}

  /// Reads the section of a component or of an alternative, or what the module would make of a missing one.
  Definition Read(const std::string& name);

  /// Entries that the module looks at in all the components read so far.
  std::size_t EntriesRead() const { return entriesRead_; }

 private:
  ConfiguredRequest Request(const std::string& section, const char* key) const;
  void ReadRequests(Definition& definition) const;
  void ReadMapEntries(Definition& definition);
  void AddStatusEntry(MapEntry entry, Definition& definition) const;

  const IniFile& ini_;
  const Configuration& configuration_;
  std::size_t entriesRead_ = 0;
};

}  // namespace emstatus::host
