#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace emstatus::host {

class IniFile;

/// The names that a configuration gives to what can be simulated: its components, the instances of those that
/// have any, and the words of its statuses. [any thread]
class SimulationNames {
 public:
  /// From the text of an EM_STATUS.ini.
  explicit SimulationNames(std::string_view configurationText);

  /// Throws a std::runtime_error that tells the nearest names when neither a component without instances nor
  /// an instance can have this name. Which instances there are, only the machine knows.
  void Check(const std::string& name) const;

  /// What to know about a name that has passed Check(); empty in most cases.
  std::string Advice(const std::string& name) const;

  /// The value of a status word, or of a number from 0 to 255. Throws a std::runtime_error for other text.
  std::uint8_t StatusOf(const std::string& text) const;

 private:
  struct Component {
    std::string name;
    /// The module asks how many there are; what it simulates is the single one then.
    bool hasInstances = false;
    std::string instanceName;
    std::uint8_t firstIndex = 0;
    bool handlesCabinets = false;
  };

  void AddComponents(const IniFile& ini, const std::string& names);
  void AddComponent(const IniFile& ini, const std::string& name, const std::string& section);
  bool IsInstance(const Component& component, std::string_view name) const;
  /// What is wrong with a name that comes close to this component; empty when it does not.
  std::string Misuse(const Component& component, const std::string& name) const;
  std::vector<std::string> Nearest(const std::string& name) const;

  std::map<std::string, std::uint8_t, std::less<>> statuses_;
  std::vector<Component> components_;
};

}  // namespace emstatus::host
