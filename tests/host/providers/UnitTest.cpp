#include <gtest/gtest.h>

#include <cerrno>
#include <system_error>

#include "host/providers/UnitName.h"
#include "host/providers/UnitProvider.h"
#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {
namespace {

using namespace host;

class ScriptedManager final : public UnitManager {
 public:
  struct Script {
    bool isThere = true;
    std::string system = "running";
    std::vector<UnitState> units;
    std::string alias;
    std::string aliasOf;
  };
  explicit ScriptedManager(const Script& script) : script_(script) {}

  bool IsThere() override { return script_.isThere; }
  std::string SystemState() override {
    if (script_.system.empty()) {
      throw std::system_error(ETIMEDOUT, std::generic_category(), "systemd: no answer");
    }
    return script_.system;
  }
  std::vector<UnitState> FailedUnits() override {
    return Those([](const UnitState& unit) { return unit.active == "failed"; });
  }
  std::vector<UnitState> Units(const std::vector<std::string>& names) override {
    std::vector<UnitState> units;
    for (const std::string& asked : names) {
      if (!IsUnitName(asked) || TemplateOf(asked) == asked) {
        throw std::system_error(EINVAL, std::generic_category(), "systemd: one name spoils it for all");
      }
      const std::string& name = asked == script_.alias ? script_.aliasOf : asked;
      const auto found = Those([&](const UnitState& unit) { return unit.name == name; });
      units.push_back(found.empty() ? UnitState{name, "", "not-found", "inactive", "dead"} : found[0]);
    }
    return units;
  }
  std::vector<UnitState> UnitsLike(const std::string& pattern) override {
    const std::size_t star = pattern.find('*');
    return Those([&](const UnitState& unit) {
      return unit.name.starts_with(pattern.substr(0, star)) && unit.name.ends_with(pattern.substr(star + 1));
    });
  }

 private:
  template <typename Condition>
  std::vector<UnitState> Those(const Condition& condition) const {
    std::vector<UnitState> units;
    for (const UnitState& unit : script_.units) {
      if (condition(unit)) {
        units.push_back(unit);
      }
    }
    return units;
  }

  const Script& script_;
};

UnitState Unit(const std::string& name, const std::string& active, const std::string& sub,
               const std::string& load = "loaded") {
  return {name, "", load, active, sub};
}

TEST(Units, RequiredAndFailedOnes) {
  ScriptedManager::Script script;
  script.units = {Unit("a.service", "active", "running"),
                  Unit("b.service", "failed", "failed"),
                  Unit("c.mount", "failed", "failed"),
                  Unit("d.service", "inactive", "dead", "masked"),
                  Unit("f.service", "activating", "auto-restart"),
                  Unit("g.service", "activating", "start"),
                  Unit("h.service", "inactive", "dead")};
  UnitProvider provider(std::make_unique<ScriptedManager>(script),
                        {"a", "b.service", "d.service", "e", "f", "g", "h", "not a name"});
  const Texts lines = {"systemd good",
                       "a.service good",
                       "b.service critical: has failed, active expected",
                       "d.service critical: cannot be started (masked), though it is named as required",
                       "e.service critical: cannot be started (not-found), though it is named as required",
                       "f.service critical: ended and waits to be started again, active expected",
                       "g.service warning: is activating (start), active expected",
                       "h.service critical: is inactive (dead), active expected",
                       "not a name.service critical: is no name of a unit, though it is named as required",
                       "c.mount warning: has failed, no failure expected"};
  EXPECT_EQ(Lines(ReadAt(provider, 0)), lines);
  script.units[2].active = "active";
  script.system = "starting";
  const auto later = Lines(ReadAt(provider, 10));
  EXPECT_EQ(later[0], "systemd good: the system is starting");
  EXPECT_EQ(later[9], "c.mount good") << "one that had failed is told until reading ends";
  script.units.erase(script.units.begin() + 2);
  EXPECT_EQ(ReadAt(provider, 20).size(), later.size() - 1);
  script.system = "";
  EXPECT_THROW(ReadAt(provider, 30), std::system_error);
}

TEST(Units, OtherNamesTemplatesAndTheirInstances) {
  ScriptedManager::Script script;
  script.alias = "sshd.service";
  script.aliasOf = "ssh.service";
  script.units = {Unit("ssh.service", "failed", "failed"), Unit("web@1.service", "failed", "failed"),
                  Unit("web@2.service", "active", "running")};
  UnitProvider provider(std::make_unique<ScriptedManager>(script),
                        {"sshd", "web@", "none@.socket", "php8.2-fpm"});
  EXPECT_EQ(
      Lines(ReadAt(provider, 0)),
      (Texts{"systemd good", "none@.socket critical: is inactive (no instance), active expected",
             "php8.2-fpm.service critical: cannot be started (not-found), though it is named as required",
             "sshd.service critical: has failed, active expected", "web@.service good"}))
      << "what is required is told once, under the name that it was asked by";
  for (int number = 1; number <= 7; ++number) {
    script.units.push_back(Unit("dump@" + std::to_string(number) + ".service", "failed", "failed"));
  }
  EXPECT_EQ(Line(ReadAt(provider, 10).back()),
            "dump@.service warning: 7 of its instances have failed, no failure expected: dump@1.service, "
            "dump@2.service, dump@3.service, dump@4.service, dump@5.service, …");
  script.units.resize(3);
  EXPECT_EQ(Line(ReadAt(provider, 20).back()), "dump@.service good");
}

TEST(Units, NobodyToAskIsLateAndNeverGood) {
  const std::string late =
      " late: systemd cannot be asked: it does not run this machine, or there is no system bus";
  UnitProvider without(nullptr, {"a"});
  EXPECT_EQ(Lines(ReadAt(without, 0)), (Texts{"a.service" + late}));
  ScriptedManager::Script script;
  script.units = {Unit("b.service", "failed", "failed")};
  UnitProvider provider(std::make_unique<ScriptedManager>(script), {});
  EXPECT_EQ(ReadAt(provider, 0).size(), 2u);
  script.isThere = false;
  EXPECT_EQ(Lines(ReadAt(provider, 10)), (Texts{"systemd" + late, "b.service" + late}))
      << "what had failed is not better because nobody can be asked";
}

}  // namespace
}  // namespace emstatus::test
