#include "host/providers/MountTable.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <tuple>

#include "host/providers/KernelText.h"

namespace emstatus::host {
namespace {

constexpr std::array<std::string_view, 21> kDiskTypes = {
    "bcachefs", "btrfs", "exfat",  "ext2", "ext3",  "ext4",     "f2fs",  "fuseblk", "hfsplus", "jffs2", "jfs",
    "minix",    "msdos", "nilfs2", "ntfs", "ntfs3", "reiserfs", "ubifs", "vfat",    "xfs",     "zfs"};
constexpr std::array<std::string_view, 6> kImageTypes = {"cramfs", "erofs",    "iso9660",
                                                         "romfs",  "squashfs", "udf"};
constexpr std::array<std::string_view, 18> kNetworkTypes = {
    "9p",     "afs",   "beegfs", "ceph", "cifs",  "coda",     "gfs2", "glusterfs", "gpfs",
    "lustre", "ncpfs", "nfs",    "nfs4", "ocfs2", "orangefs", "smb3", "smbfs",     "virtiofs"};
constexpr std::array<std::string_view, 3> kContainerFiles = {"/etc/hostname", "/etc/hosts",
                                                             "/etc/resolv.conf"};
constexpr std::array<std::string_view, 7> kPassingPoints = {
    "/media/",          "/mnt/wsl",         "/run/", "/snap/", "/var/lib/containers/",
    "/var/lib/docker/", "/var/lib/kubelet/"};

template <typename Names>
bool Contains(const Names& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

bool HasOption(std::string_view options, std::string_view option) {
  return Contains(Words(options, ','), option);
}

std::optional<Mount> ParseLine(std::string_view line) {
  // id parent major:minor root point options [optional fields ...] - type source super-options
  const std::vector<std::string_view> words = Words(line);
  const auto dash = std::ranges::find(words, std::string_view("-"));
  if (words.size() < 6 || dash - words.begin() < 6 || words.end() - dash < 4) {
    return std::nullopt;
  }
  Mount mount;
  mount.device = words[2];
  mount.root = WithoutOctalEscapes(words[3]);
  mount.point = WithoutOctalEscapes(words[4]);
  mount.mountReadOnly = HasOption(words[5], "ro");
  mount.type = WithoutOctalEscapes(dash[1]);
  mount.source = WithoutOctalEscapes(dash[2]);
  mount.superReadOnly = HasOption(dash[3], "ro") || HasOption(dash[3], "emergency_ro");
  mount.isShutDown = HasOption(dash[3], "shutdown");
  return mount;
}

std::vector<Mount> Uncovered(const std::vector<Mount>& mounts) {
  std::vector<Mount> uncovered;
  std::map<std::string_view, std::size_t> places;
  for (auto mount = mounts.rbegin(); mount != mounts.rend(); ++mount) {
    const auto [place, isNew] = places.emplace(mount->point, uncovered.size());
    if (isNew) {
      uncovered.push_back(*mount);
    } else if (IsWaitingPlace(*mount)) {
      uncovered[place->second].isOnDemand = true;
    }
  }
  std::ranges::reverse(uncovered);
  return uncovered;
}

bool IsTold(const Mount& mount) {
  if (mount.point == "/" && mount.type == "overlay") {
    return true;
  }
  return KindOf(mount) == FilesystemKind::Disk && !Contains(kContainerFiles, mount.point);
}

// Subvolumes of one btrfs share the room, whatever device they are shown with.
std::string IdentityOf(const Mount& mount) {
  return mount.type == "btrfs" ? mount.source : mount.device;
}

auto Preference(const Mount& mount) {
  return std::tuple(mount.root != "/", mount.point.size(), mount.point);
}

}  // namespace

std::vector<Mount> ParseMountInfo(std::string_view text) {
  std::vector<Mount> mounts;
  for (const std::string_view line : Lines(text)) {
    if (auto mount = ParseLine(line)) {
      mounts.push_back(std::move(*mount));
    }
  }
  return mounts;
}

FilesystemKind KindOf(const Mount& mount) {
  if (Contains(kImageTypes, mount.type)) {
    return FilesystemKind::Image;
  }
  if (Contains(kNetworkTypes, mount.type)) {
    return FilesystemKind::Network;
  }
  const bool unknownOnDevice = mount.source.starts_with("/dev/") && !mount.type.starts_with("fuse") &&
                               mount.type != "devtmpfs" && mount.type != "overlay";
  return Contains(kDiskTypes, mount.type) || unknownOnDevice ? FilesystemKind::Disk : FilesystemKind::Pseudo;
}

std::vector<Mount> MountsToTell(const std::vector<Mount>& mounts, const std::vector<std::string>& named) {
  const std::vector<Mount> uncovered = Uncovered(mounts);
  std::map<std::string, const Mount*> chosen;
  for (const Mount& mount : uncovered) {
    const Mount*& choice = chosen[IdentityOf(mount)];
    if (IsTold(mount) && (choice == nullptr || Preference(mount) < Preference(*choice))) {
      choice = &mount;
    }
  }
  std::vector<Mount> told;
  for (const Mount& mount : uncovered) {
    if (chosen[IdentityOf(mount)] == &mount || Contains(named, mount.point)) {
      told.push_back(mount);
    }
  }
  return told;
}

bool IsWaitingPlace(const Mount& mount) {
  return mount.type == "autofs";
}

bool ComesAndGoes(const Mount& mount) {
  return mount.isOnDemand || std::ranges::any_of(kPassingPoints, [&](std::string_view prefix) {
           return mount.point.starts_with(prefix);
         });
}

}  // namespace emstatus::host
