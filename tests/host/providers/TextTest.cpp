#include <gtest/gtest.h>

#include <cerrno>

#include "host/providers/KernelText.h"
#include "host/providers/MountTable.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

using Numbers = std::vector<std::uint32_t>;
using Texts = std::vector<std::string>;

TEST(KernelText, NumbersAreWholeOrNothing) {
  const struct {
    const char* text;
    std::optional<std::int64_t> number;
  } rows[] = {{"0", 0},
              {" 42\n", 42},
              {"-128000", -128000},
              {"+7", 7},
              {"", {}},
              {"-", {}},
              {"+-7", {}},
              {"12abc", {}},
              {"1.5", {}},
              {"0x10", {}},
              {"9223372036854775807", INT64_MAX},
              {"9223372036854775808", {}}};
  for (const auto& row : rows) {
    EXPECT_EQ(ParseInteger(row.text), row.number) << row.text;
  }
  EXPECT_EQ(ParseUnsigned("0x1003"), 0x1003u);
  EXPECT_EQ(ParseUnsigned("-1"), std::nullopt);
  EXPECT_EQ(ParseDecimal("12.50"), 12.5);
  EXPECT_EQ(ParseDecimal("nan"), std::nullopt);
}

TEST(KernelText, RangeListsAreBounded) {
  EXPECT_EQ(*ParseRangeList("0-2,8,10-11"), (Numbers{0, 1, 2, 8, 10, 11}));
  EXPECT_TRUE(ParseRangeList("")->empty());
  for (const char* bad : {"3-1", "a", "1-", "0-4294967295", "4294967295", "0-99999"}) {
    EXPECT_FALSE(ParseRangeList(bad)) << bad;
  }
}

TEST(ReadFault, ErrorsBecomeQualities) {
  const struct {
    int error;
    Quality quality;
  } rows[] = {{EIO, Quality::SensorFault},       {ENXIO, Quality::SensorFault},
              {EREMOTEIO, Quality::SensorFault}, {ENODATA, Quality::Inactive},
              {EOPNOTSUPP, Quality::Inactive},   {ENOENT, Quality::Lost},
              {ENODEV, Quality::Lost},           {EAGAIN, Quality::Late},
              {ETIMEDOUT, Quality::Late},        {EACCES, Quality::Late}};
  for (const auto& row : rows) {
    Reading reading;
    reading.measurement = Measurement{1, Unit::Volt, {}};
    SetUnread(reading, "in1_input", row.error);
    EXPECT_EQ(reading.quality, row.quality) << row.error;
    EXPECT_FALSE(reading.measurement) << row.error;
    EXPECT_NE(reading.reason.find("in1_input"), std::string::npos) << reading.reason;
  }
}

std::vector<std::string> Told(const char* mountinfo, const std::vector<std::string>& named = {}) {
  std::vector<std::string> points;
  for (const Mount& mount : MountsToTell(ParseMountInfo(mountinfo), named)) {
    points.push_back(mount.point);
  }
  return points;
}

TEST(MountTable, LinesWithOptionalFieldsEscapesAndRubbish) {
  const auto mounts = ParseMountInfo(
      "36 35 8:1 /sub /mnt/my\\040disk ro,noatime shared:1 master:2 - ext4 /dev/sda\\0111 rw,errors=continue\n"
      "\n"
      "36 35 8:1 / /broken rw\n"
      "37 35 8:2 / /flipped rw - ext4 /dev/sdb1 ro,errors=remount-ro\n"
      "38 35 8:3 / /emergency rw - ext4 /dev/sdc1 rw,emergency_ro");
  ASSERT_EQ(mounts.size(), 3u);
  EXPECT_EQ(mounts[0], (Mount{"8:1", "/sub", "/mnt/my disk", "ext4", "/dev/sda\t1", true, false}));
  EXPECT_EQ(mounts[1], (Mount{"8:2", "/", "/flipped", "ext4", "/dev/sdb1", false, true}));
  EXPECT_TRUE(mounts[2].superReadOnly);
}

TEST(MountTable, DiskFilesystemsOnceEach) {
  EXPECT_EQ(Told("1 0 0:21 / /proc rw - proc proc rw\n"
                 "2 0 0:22 / /run rw - tmpfs tmpfs rw\n"
                 "3 0 8:1 / / rw - ext4 /dev/sda1 rw\n"
                 "4 0 8:1 /home /home rw - ext4 /dev/sda1 rw\n"
                 "5 0 7:0 / /snap/core rw - squashfs /dev/loop0 ro\n"
                 "6 0 0:40 / /net rw - nfs4 server:/export rw\n"
                 "7 0 0:41 /@ /b rw - btrfs /dev/sdb rw\n"
                 "8 0 0:42 /@home /b/home rw - btrfs /dev/sdb rw\n"
                 "9 0 0:43 / /tank rw - zfs tank rw\n"
                 "10 0 259:3 / /new rw - futurefs /dev/nvme0n1p3 rw\n"
                 "11 0 8:5 / /covered rw - xfs /dev/sda5 rw\n"
                 "12 0 8:6 / /covered rw - xfs /dev/sda6 rw\n"
                 "13 0 0:50 / /gvfs rw - fuse.sshfs /dev/pts rw\n"
                 "14 0 0:51 / /lib/docker/merged rw - overlay overlay rw\n"),
            (Texts{"/", "/b", "/tank", "/new", "/covered"}));
  EXPECT_EQ(Told("1 0 0:30 / / rw - overlay overlay rw\n"
                 "2 0 8:1 /var/hosts /etc/hosts rw - ext4 /dev/sda1 rw\n"
                 "3 0 8:2 /vol /data rw - ext4 /dev/sda2 rw\n"),
            (Texts{"/", "/data"}))
      << "a container";
  EXPECT_EQ(Told("1 0 0:30 / /net rw - nfs s:/x rw\n2 0 0:31 / /tmp rw - tmpfs t rw\n", {"/net", "/tmp"}),
            (Texts{"/net", "/tmp"}));
}

}  // namespace
}  // namespace emstatus::host
