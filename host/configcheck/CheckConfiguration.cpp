#include "host/configcheck/Checks.h"

namespace emstatus::host {

std::vector<Problem> CheckConfiguration(const IniFile& ini, const Configuration& configuration,
                                        const std::string& file) {
  Problems problems(file);
  CheckLines(ini, ConfigurationSections(), problems);
  const ConfigurationCheck check{ini, configuration, problems};
  CheckIdentity(check);
  CheckSettings(check);
  CheckStatusNames(check);
  CheckVariables(check);
  CheckLists(check);
  CheckIds(check);
  return problems.InOrder();
}

}  // namespace emstatus::host
