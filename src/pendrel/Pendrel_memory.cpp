#include <cstdint>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "base/faults.h"
#include "base/numbers.h"
#include "pendrel/Pendrel.h"
#include "pendrel/starred.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int32_t BlockBytes = PendrelRecord::BlockBytes, BlockKilobytes = BlockBytes / 1024;
constexpr std::int32_t HighestAddress = 65535;

void checkAddress(StarredProcedure& command, std::int32_t address) {
  if (address < 0 || address > HighestAddress) command.raise(PendrelAddress, "Invalid memory address");
}

/// The sum that follows a block: that of its bytes, in 16 bits, high byte first.
bool checksumHolds(const std::vector<std::uint8_t>& block) {
  const std::uint8_t high = fault::at(block, BlockBytes), low = fault::at(block, BlockBytes + 1);
  const std::uint32_t sum = std::accumulate(block.begin(), block.begin() + BlockBytes, std::uint32_t{0});
  return (sum & 0xFFFFU) == high * 256U + low;
}

/// Raises TypeMismatch for text that is not hexadecimal, Overflow above 255.
std::uint8_t byteOf(std::string_view digits) {
  const auto value = parseHexadecimal(digits);
  if (!value) fault::raise(fault::TypeMismatch);
  return fault::narrow<std::uint8_t>(*value);
}

}  // namespace

std::vector<std::uint8_t> Pendrel::fncReadMemoryBlock(std::int16_t block) {
  StarredProcedure command{link(), "fncReadMemoryBlock"};
  return command.procedure.run([&] {
    if (block < 0 || block > record.MemorySizeKB / BlockKilobytes - 1)
      command.raise(PendrelBlock, "Invalid block number for download");
    if (record.Get_DeviceType() == Device_Unknown) command.raise(PendrelDeviceType, "Unsupported device");

    const bool checked = record.Get_CTcompliant();
    const auto number = static_cast<std::uint8_t>((block * 16) & 0xF0);
    command.send(starred::ReadBlock, Tools().fncConvertByteToHexString(number));
    std::int32_t count = checked ? BlockBytes + 2 : BlockBytes;
    auto bytes = command.procedure.statement([&] {
      return link().fncGetBinaryStream(count, starred::Baud4800, starred::EightDataBits, starred::NoParity,
                                       starred::OneStopBit, 4000, 500, false, 150);
    });
    if (checked && !command.procedure.statement([&] { return checksumHolds(bytes); }))
      command.raise(PendrelChecksum, "fncReadZBblock", starred::WrongChecksum);
    command.procedure.statement([&] {
      const std::int32_t address = block * BlockBytes;
      subSetRawDataBlock(address, address + BlockBytes - 1, bytes);
    });
    command.rest();
    return bytes;
  });
}

std::uint8_t Pendrel::fncReadMemoryLocation(std::int32_t address) {
  StarredProcedure command{link(), "fncReadMemoryLocation"};
  return command.procedure.run([&] {
    checkAddress(command, address);
    const std::string digits = starred::hexWord(address);
    const bool checked = record.Get_CTcompliant();
    const auto lines = command.ask(starred::ReadLocation, digits, checked);
    if (checked && !starred::standsFor(lines[1], starred::checksumOf(digits + lines[0])))
      command.raise(PendrelChecksum, starred::WrongChecksum);
    return command.procedure.statement([&] { return byteOf(lines[0]); });
  });
}

void Pendrel::subSetMemorylocation(std::int32_t address, std::uint8_t value) {
  StarredProcedure command{link(), "subSetMemorylocation"};
  command.procedure.run([&] {
    checkAddress(command, address);
    command.ask(starred::WriteLocation, starred::hexWord(address) + Tools().fncConvertByteToHexString(value));
  });
}

void Pendrel::subClearMemory(std::uint8_t value) {
  StarredProcedure command{link(), "subClearMemory"};
  command.procedure.run([&] { command.ask(starred::ClearMemory, Tools().fncConvertByteToHexString(value)); });
}

}  // namespace hy_wristlog
