#include "host/providers/FilesystemErrors.h"

#include <algorithm>
#include <string>
#include <vector>

#include "host/providers/KernelText.h"

namespace emstatus::host {
namespace {

// The block device's name in the kernel ("dm-3"), of a path that may be a link to it.
std::string DeviceName(SystemFiles& files, const std::string& link, const std::string& otherwise) {
  const FileResult<std::string> path = files.RealPath(link);
  return std::string(BaseName(path ? path.value : otherwise));
}

std::optional<std::int64_t> NumberIn(SystemFiles& files, const std::string& path) {
  const FileResult<std::string> text = files.ReadAttribute(path);
  return text ? ParseInteger(text.value) : std::nullopt;
}

std::optional<FilesystemErrors> ReadExt4(SystemFiles& files, const Mount& mount) {
  const std::string folder =
      "/sys/fs/ext4/" + DeviceName(files, "/sys/dev/block/" + mount.device, mount.source);
  const auto count = NumberIn(files, folder + "/errors_count");
  if (!count) {
    return std::nullopt;
  }
  FilesystemErrors errors;
  errors.count = *count;
  errors.lastTime = *count > 0 ? NumberIn(files, folder + "/last_error_time").value_or(0) : 0;
  errors.isDamage = true;
  errors.what = "filesystem";
  errors.advice = "unmount it and run e2fsck; look for disk errors in the kernel log";
  return errors;
}

// "write_errs 0", a line for each kind.
std::int64_t SumOfLines(const std::string& text) {
  std::int64_t sum = 0;
  for (const std::string_view line : Lines(text)) {
    const std::vector<std::string_view> words = Words(line);
    sum += words.size() == 2 ? ParseInteger(words[1]).value_or(0) : 0;
  }
  return sum;
}

std::optional<FilesystemErrors> ReadBtrfs(SystemFiles& files, const Mount& mount) {
  const std::string all = "/sys/fs/btrfs";
  const std::string device = DeviceName(files, mount.source, mount.source);
  for (const std::string& identity : files.List(all).value) {
    const std::string folder = all + "/" + identity;
    const std::vector<std::string> devices = files.List(folder + "/devices").value;
    if (std::ranges::find(devices, device) == devices.end()) {
      continue;
    }
    FilesystemErrors errors;
    errors.what = "device";
    errors.advice = "see which device: btrfs device stats; look at its SMART data, scrub the filesystem";
    bool isTold = false;
    for (const std::string& number : files.List(folder + "/devinfo").value) {
      const std::string info = folder + "/devinfo/" + number;
      const FileResult<std::string> counts = files.ReadText(info + "/error_stats", 4096);
      isTold = isTold || counts;
      errors.count += SumOfLines(counts.value);
      errors.missingDevices += NumberIn(files, info + "/missing").value_or(0) > 0 ? 1U : 0U;
    }
    return isTold || errors.missingDevices > 0 ? std::optional(errors) : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace

std::optional<FilesystemErrors> ReadFilesystemErrors(SystemFiles& files, const Mount& mount) {
  if (mount.type == "ext4" || mount.type == "ext3" || mount.type == "ext2") {
    return ReadExt4(files, mount);
  }
  return mount.type == "btrfs" ? ReadBtrfs(files, mount) : std::nullopt;
}

}  // namespace emstatus::host
