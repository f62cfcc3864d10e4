#include "host/providers/RealFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

using namespace host;

TEST(RealFiles, LinksInACopyStayInIt) {
  TemporaryDirectory folder;
  folder.Write("outside", "no");
  folder.Write("copy/sys/devices/chip/name", "chip\n");
  folder.Write("copy/sys/class/.keep", "");
  folder.Write("copy/etc/hostname", "copied\n");
  const auto link = [&](const std::string& target, const char* name) {
    std::filesystem::create_symlink(target, folder.File(std::string("copy/") + name));
  };
  link("../devices/chip", "sys/class/relative");
  link("/sys/devices/chip", "sys/class/absolute");
  link("/sys/class/absolute/../chip/./name", "sys/class/through");
  link("../../../../outside", "sys/class/above");
  link(folder.File("outside"), "sys/class/host");
  link("/etc/hostname", "sys/class/hostname");
  link("circle", "sys/class/circle");
  link("/gone/for/ever", "sys/class/gone");
  RealFiles files(folder.File("copy"));
  const struct {
    const char* path;
    const char* text;
    int error;
    const char* real;
  } rows[] = {
      {"/sys/class/relative/name", "chip", 0, "/sys/devices/chip/name"},
      {"/sys/class/absolute/name", "chip", 0, "/sys/devices/chip/name"},
      {"/sys/class/through", "chip", 0, "/sys/devices/chip/name"},
      {"/sys/class/hostname", "copied", 0, "/etc/hostname"},
      {"/sys/class/above", "", ENOENT, ""},
      {"/../outside", "", ENOENT, ""},
      {"/sys/class/host", "", ENOENT, ""},
      {"/sys/class/gone", "", ENOENT, ""},
      {"/sys/class/circle", "", ELOOP, ""},
      {"/sys/class/relative/name/more", "", ENOTDIR, ""},
      {"/sys/class/relative", "", EISDIR, "/sys/devices/chip"},
  };
  for (const auto& row : rows) {
    const auto text = files.ReadAttribute(row.path);
    EXPECT_EQ(text.value, row.text) << row.path;
    EXPECT_EQ(text.error, row.error) << row.path;
    EXPECT_EQ(files.RealPath(row.path).value, row.real) << row.path;
  }
  EXPECT_NE(fcntl(STDIN_FILENO, F_GETFD), -1) << "what was never opened is not closed";
  EXPECT_EQ(files.ReadLink("/sys/class/absolute").value, "/sys/devices/chip");
  EXPECT_EQ(files.List("/sys/class/relative").value, std::vector<std::string>{"name"});
  EXPECT_EQ(files.WriteAttribute("/sys/class/relative/name", "x").error, EROFS);
  EXPECT_EQ(files.Room("/").error, EOPNOTSUPP);
}

TEST(RealFiles, OnlyPlainFilesOfACopyAreOpened) {
  TemporaryDirectory folder;
  RealFiles files(folder.Path().string());
  ASSERT_EQ(mkfifo(folder.File("fifo").c_str(), 0600), 0);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, folder.File("socket").c_str(), sizeof(address.sun_path) - 1);
  ASSERT_EQ(bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
  for (const char* path : {"/fifo", "/socket"}) {
    EXPECT_EQ(files.ReadAttribute(path).error, ENXIO) << path;
    EXPECT_EQ(files.ReadText(path, 100).error, ENXIO) << path;
    EXPECT_EQ(files.OpenForPoll(path).error, ENXIO) << path;
    EXPECT_EQ(files.List(path).error, ENOTDIR) << path;
  }
  close(socket);
}

}  // namespace
}  // namespace emstatus::test
