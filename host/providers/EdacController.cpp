#include "host/providers/EdacController.h"

#include <algorithm>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

bool IsNumbered(std::string_view name, std::string_view prefix) {
  return NumberAfter(name, prefix).has_value();
}

/// Reads from the folder of one controller.
class ControllerFolder {
 public:
  ControllerFolder(SystemFiles& files, std::string name)
      : files_(files), name_(std::move(name)), path_(std::string(kEdacFolder) + "/" + name_) {}

  const std::string& Name() const { return name_; }
  std::vector<std::string> Entries() const { return files_.List(path_).value; }
  FileResult<std::string> Read(const std::string& attribute) const {
    return files_.ReadAttribute(path_ + "/" + attribute);
  }
  std::string Label(const std::string& attribute) const {
    std::string label(Trimmed(Read(attribute).value));
    std::ranges::replace_if(
        label, [](unsigned char character) { return character < ' '; }, ' ');
    return label;
  }
  /// The counters `corrected` and `uncorrected` of what `entry` of the controller names; empty: its own.
  EdacModule Module(const std::string& entry, std::string name, const std::string& corrected,
                    const std::string& uncorrected) const {
    const std::string prefix = entry.empty() ? "" : entry + "/";
    EdacModule module{entry.empty() ? name_ : name_ + "/" + entry,
                      std::move(name),
                      {corrected, Read(prefix + corrected)},
                      {uncorrected, Read(prefix + uncorrected)}};
    if (module.name.empty()) {
      module.name = module.id;
    }
    return module;
  }

 private:
  SystemFiles& files_;
  const std::string name_;
  const std::string path_;
};

bool AddDimms(EdacController& controller, const ControllerFolder& folder) {
  for (const std::string& entry : folder.Entries()) {
    if (!IsNumbered(entry, "dimm") && !IsNumbered(entry, "rank")) {
      continue;
    }
    std::string name = folder.Label(entry + "/dimm_label");
    const std::string place = folder.Label(entry + "/dimm_location");
    if (name.empty() && !place.empty()) {
      name = folder.Name() + "/" + entry + " (" + place + ")";
    }
    controller.modules.push_back(folder.Module(entry, std::move(name), "dimm_ce_count", "dimm_ue_count"));
  }
  return !controller.modules.empty();
}

// Older kernels count by the row of the board only.
bool AddRows(EdacController& controller, const ControllerFolder& folder) {
  for (const std::string& entry : folder.Entries()) {
    if (IsNumbered(entry, "csrow")) {
      controller.modules.push_back(
          folder.Module(entry, folder.Label(entry + "/ch0_dimm_label"), "ce_count", "ue_count"));
    }
  }
  return !controller.modules.empty();
}

}  // namespace

EdacController ReadEdacController(SystemFiles& files, const std::string& name) {
  const ControllerFolder folder(files, name);
  EdacController controller;
  const FileResult<std::string> age = folder.Read("seconds_since_reset");
  controller.age = age ? ParseInteger(age.value) : std::nullopt;
  if (controller.age && *controller.age < 0) {
    controller.age.reset();
  }
  const std::string number = name.substr(2);
  if (!AddDimms(controller, folder) && !AddRows(controller, folder)) {
    controller.modules = {folder.Module("", "memory of controller " + number, "ce_count", "ue_count")};
  } else {
    EdacModule rest = folder.Module("", "memory controller " + number + " (errors without a module)",
                                    "ce_noinfo_count", "ue_noinfo_count");
    if (rest.corrected.text || rest.uncorrected.text) {
      controller.modules.push_back(std::move(rest));
    }
  }
  std::erase_if(controller.modules, [](const EdacModule& module) {
    return IsGone(module.corrected.text.error) && IsGone(module.uncorrected.text.error);
  });
  return controller;
}

}  // namespace emstatus::host
