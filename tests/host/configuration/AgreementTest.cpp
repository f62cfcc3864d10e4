// The host's reader of configurations against the module's own: whatever a file says, both make the same of
// it.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "config/ConfigurationReader.h"
#include "host/configuration/Configuration.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

namespace fs = std::filesystem;

std::string Described(const std::string& text, const std::string& context, const std::string& oc,
                      const std::string& data) {
  return text + " context=" + context + " OC=" + oc + " data=" + data;
}

std::string Described(const RequestRecord& request) {
  const Element* data = request.command.Child("DATA");
  return Described(request.text, request.command.Attribute("Context"), request.command.Attribute("OC"),
                   data == nullptr ? "none" : data->Attribute("Type") + ":" + data->text);
}

std::string Described(const host::ConfiguredRequest& request) {
  const auto attribute = [&](const char* name) {
    const std::string* value = request.IsDefined() ? request.element->Attribute(name) : nullptr;
    return value == nullptr ? std::string() : *value;
  };
  const bool hasData = request.IsDefined() && request.element->data;
  return Described(request.text, attribute("Context"), attribute("OC"),
                   hasData ? request.element->data->type + ":" + request.element->data->text : "none");
}

void ExpectSame(const host::Definition& mine, const ComponentDefinition& theirs) {
  SCOPED_TRACE(theirs.name);
  EXPECT_TRUE(mine.isUsable);
  EXPECT_EQ(mine.displayName, theirs.displayName);
  EXPECT_EQ(mine.instanceName, theirs.instanceName);
  EXPECT_EQ(mine.source, theirs.source);
  EXPECT_EQ(mine.objectName, theirs.objectName);
  EXPECT_EQ(static_cast<int>(mine.category), static_cast<int>(theirs.category));
  EXPECT_EQ(mine.context == "TRIQ", theirs.queryContext == QueryContext::Triq);
  EXPECT_EQ(mine.instanceBaseIndex, theirs.instanceBaseIndex);
  EXPECT_EQ(mine.handlesCabinets, theirs.handleCabinets);
  EXPECT_EQ(mine.nrInstances, theirs.nrInstances);
  EXPECT_EQ(mine.hasAlternative, theirs.hasAlternative);
  EXPECT_EQ(mine.HasNumberedInstances(), theirs.HasNumberedInstances());
  EXPECT_EQ(Described(mine.displayNameRequest), Described(theirs.displayNameRequest));
  EXPECT_EQ(Described(mine.statusRequest), Described(theirs.statusRequest));
  EXPECT_EQ(Described(mine.cssRequest), Described(theirs.cssRequest));
  EXPECT_EQ(Described(mine.nrInstancesRequest), Described(theirs.nrInstancesRequest));
  EXPECT_EQ(Described(mine.redundancyRequest), Described(theirs.redundancyRequest));
  EXPECT_EQ(Described(mine.designationRequest), Described(theirs.designationRequest));
  EXPECT_EQ(Described(mine.targetHostRequest), Described(theirs.targetHostRequest));
  EXPECT_EQ(Described(mine.statusConfirm), Described(theirs.statusConfirm));

  EXPECT_EQ(mine.statusMap.size(), theirs.statusMap.size());
  for (const auto& [raw, mapped] : theirs.statusMap) {
    const auto found = mine.statusMap.find(raw);
    ASSERT_NE(found, mine.statusMap.end()) << raw;
    EXPECT_EQ(found->second.value, mapped.status) << raw;
    EXPECT_EQ(mine.statusEntries[found->second.entry].raw, mapped.text);
  }
  ASSERT_EQ(mine.otherStatus.has_value(), theirs.undefinedStatus.has_value());
  EXPECT_TRUE(!mine.otherStatus || mine.otherStatus->value == *theirs.undefinedStatus);
  std::map<std::int32_t, std::int32_t> redundancy;
  for (const auto& [raw, mapping] : mine.redundancyMap) redundancy[raw] = mapping.value;
  EXPECT_EQ(redundancy, theirs.redundancyMap);
}

/// Answers whether the file is accepted.
bool Compare(const fs::path& path) {
  SCOPED_TRACE(path.string());
  ConfigurationReader reader(
      [&path](std::string& found) {
        found = path.string();
        return true;
      },
      [] { return false; });
  StatusConfiguration theirs;
  const bool accepted = reader.ReadConfigurationFile(theirs);
  const host::Configuration mine = host::ReadConfiguration(host::ReadIniFile(path.string()));
  EXPECT_EQ(mine.isAccepted, accepted);
  if (!accepted) return false;

  EXPECT_EQ(mine.initialPollingDelay, theirs.initialPollingDelay);
  EXPECT_EQ(mine.pollingRate, theirs.pollingRate);
  EXPECT_EQ(mine.advancedPollingRate, theirs.advancedPollingRate);
  EXPECT_EQ(mine.advancedPollingCycles, theirs.advancedPollingCycles);
  EXPECT_EQ(mine.queryFailStatus, theirs.queryFailStatus);
  EXPECT_EQ(mine.statusNames, theirs.statusNames);
  EXPECT_EQ(mine.statusValues, theirs.statusValues);
  EXPECT_EQ(mine.systemDesignation, theirs.systemDesignation);
  EXPECT_EQ(mine.subsystems.size(), theirs.subsystems.size());
  for (std::size_t i = 0; i < std::min(mine.subsystems.size(), theirs.subsystems.size()); ++i) {
    EXPECT_EQ(mine.subsystems[i].name, theirs.subsystems[i].name);
    EXPECT_EQ(mine.subsystems[i].displayName, theirs.subsystems[i].displayName);
    EXPECT_EQ(mine.subsystems[i].components, theirs.subsystems[i].componentNames);
  }
  for (const auto& [name, definition] : theirs.components) {
    const host::Definition* found = mine.FindComponent(name);
    if (found != nullptr) {
      ExpectSame(*found, definition);
    } else {
      ADD_FAILURE() << "the host does not know " << name;
    }
  }
  for (const auto& [name, definition] : mine.components) {
    EXPECT_EQ(definition.isUsable, theirs.FindComponent(name) != nullptr) << name;
  }
  return true;
}

TEST(ConfigurationAgreement, OnFilesOfThisRepository) {
  const fs::path root = EM_SOURCE_DIR;
  EXPECT_TRUE(Compare(root / "etc/EM_STATUS.ini"));
  int compared = 0;
  for (const auto& run : fs::recursive_directory_iterator(root / "tests/data/runs")) {
    if (run.path().filename() == "EM_STATUS.ini") {
      Compare(run.path());
      ++compared;
    }
  }
  for (const char* folder : {"configuration", "profile_read", "simulation", "trace_file"}) {
    for (const auto& file : fs::directory_iterator(root / "fuzz/corpus" / folder)) {
      Compare(file.path());
      // Also those that name no layout.
      TemporaryDirectory folderOfOne;
      Compare(folderOfOne.Write("x.ini", "[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=4\n" +
                                             host::ReadFileText(file.path().string())));
      ++compared;
    }
  }
  EXPECT_GT(compared, 15);
}

/// Each line of the shipped file in turn is spoilt in the ways in which files are.
TEST(ConfigurationAgreement, OnSpoiltFiles) {
  const std::string text = host::ReadFileText(EM_SOURCE_DIR "/tests/data/runs/instances/EM_STATUS.ini");
  TemporaryDirectory folder;
  const std::string spoils[] = {";",
                                "]",
                                "[",
                                "=",
                                " ",
                                "\t",
                                "%",
                                "\"",
                                ">",
                                std::string(1, '\0'),
                                "*",
                                "-1 ",
                                "\n",
                                std::string(1000, ' '),
                                std::string(1023, 'x') + "[System]"};
  std::size_t random = 7;
  int accepted = 0;
  for (int i = 0; i < 400; ++i) {
    std::string spoilt = text;
    for (int faults = 0; faults < 3; ++faults) {
      random = random * 6364136223846793005U + 1442695040888963407U;
      const std::size_t at = (random >> 33U) % spoilt.size();
      const std::string& spoil = spoils[(random >> 20U) % std::size(spoils)];
      spoilt.replace(at, (random >> 15U) % 3, spoil);
    }
    accepted += Compare(folder.Write("EM_STATUS.ini", spoilt)) ? 1 : 0;
    ASSERT_FALSE(HasFailure()) << "in round " << i << "\n" << spoilt;
  }
  EXPECT_GT(accepted, 250);
}

}  // namespace
}  // namespace emstatus::test
