#include <fcntl.h>
#include <linux/nvme_ioctl.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <optional>

#include "host/providers/SmartHealth.h"

namespace emstatus::host {
namespace {

constexpr std::uint32_t kTimeoutMs = 10000;
// Power modes in which a drive does not turn.
constexpr std::uint8_t kStandby = 0x00;
constexpr std::uint8_t kSpunDown = 0x40;

class Device {
 public:
  explicit Device(const std::string& path) : number_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;
  ~Device() {
    if (number_ >= 0) {
      close(number_);
    }
  }
  int Number() const { return number_; }

 private:
  int number_;
};

using Sense = std::array<std::uint8_t, 32>;

// Sends an ATA command without data; its registers come back in the sense data.
int SendAta(int device, std::uint8_t command, std::uint8_t feature, std::uint8_t middle, std::uint8_t high,
            Sense& sense) {
  std::array<std::uint8_t, 16> block{};
  block[0] = 0x85;    // ATA PASS-THROUGH (16)
  block[1] = 3 << 1;  // no data
  block[2] = 0x20;    // give the registers back
  block[4] = feature;
  block[10] = middle;
  block[12] = high;
  block[14] = command;
  sg_io_hdr_t request{};
  request.interface_id = 'S';
  request.dxfer_direction = SG_DXFER_NONE;
  request.cmd_len = static_cast<unsigned char>(block.size());
  request.cmdp = block.data();
  request.mx_sb_len = static_cast<unsigned char>(sense.size());
  request.sbp = sense.data();
  request.timeout = kTimeoutMs;
  if (ioctl(device, SG_IO, &request) < 0) {
    return errno;
  }
  return request.host_status == 0 ? 0 : EIO;
}

FileResult<SmartHealth> Or(const std::optional<SmartHealth>& health) {
  return health ? FileResult<SmartHealth>{*health, 0} : FileResult<SmartHealth>{{}, EOPNOTSUPP};
}

FileResult<SmartHealth> AskAta(const std::string& disk) {
  const Device device("/dev/" + disk);
  if (device.Number() < 0) {
    return {{}, errno};
  }
  Sense sense{};
  if (const int error = SendAta(device.Number(), 0xE5, 0, 0, 0, sense); error != 0) {  // CHECK POWER MODE
    return {{}, error};
  }
  const auto power = ParseAtaRegisters(sense);
  if (!power) {
    return {{}, EOPNOTSUPP};
  }
  if (power->count == kStandby || power->count == kSpunDown) {
    return {{}, ENODATA};
  }
  sense = {};
  if (const int error = SendAta(device.Number(), 0xB0, 0xDA, 0x4F, 0xC2, sense);
      error != 0) {  // SMART RETURN STATUS
    return {{}, error};
  }
  return Or(ParseAtaSmartStatus(sense));
}

FileResult<SmartHealth> AskNvme(const std::string& disk) {
  // Not the controller of the same number: a drive with two ports is behind several, of which one may be
  // gone.
  const Device device("/dev/" + disk);
  if (device.Number() < 0) {
    return {{}, errno};
  }
  std::array<std::uint8_t, 512> page{};
  nvme_admin_cmd request{};
  request.opcode = 0x02;  // Get Log Page
  request.nsid = 0xFFFFFFFF;
  request.addr = reinterpret_cast<std::uintptr_t>(page.data());
  request.data_len = static_cast<std::uint32_t>(page.size());
  request.cdw10 = 0x02U | ((static_cast<std::uint32_t>(page.size()) / 4 - 1) << 16U);  // SMART / health
  request.timeout_ms = kTimeoutMs;
  const int result = ioctl(device.Number(), NVME_IOCTL_ADMIN_CMD, &request);
  if (result != 0) {
    return {{}, result < 0 ? errno : EIO};
  }
  return Or(ParseNvmeSmartLog(page));
}

class KernelSmartReader final : public SmartReader {
 public:
  FileResult<SmartHealth> Ask(const std::string& disk) override {
    return disk.starts_with("nvme") ? AskNvme(disk) : AskAta(disk);
  }
};

}  // namespace

std::unique_ptr<SmartReader> MakeSmartReader() {
  return std::make_unique<KernelSmartReader>();
}

}  // namespace emstatus::host
