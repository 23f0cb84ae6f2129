#include "scsi/target.h"

#include <algorithm>

namespace simulator::scsi {
namespace {

using scenario::kBlockBytes;
using scenario::LogicalUnit;

enum class Operation : std::uint8_t {
  kTestUnitReady = 0x00,
  kRequestSense = 0x03,
  kInquiry = 0x12,
  kReadCapacity = 0x25,
  kRead = 0x28,
  kWrite = 0x2A,
  kReportLuns = 0xA0,
};

Operation operation_of(const Command& command) { return static_cast<Operation>(command.cdb[0]); }

Answer check_condition(const Sense& sense) { return {.data = {}, .sense = sense}; }

Answer good(Bytes data, std::size_t allocated) {
  if (data.size() > allocated) data.resize(allocated);
  return {.data = std::move(data), .sense = std::nullopt};
}

Answer request_sense(const Command& command, const Sense& sense) {
  if ((command.cdb[1] & 1) != 0) return check_condition(invalid_field(1));  // the other format
  const FixedSense bytes = fixed_format(sense);
  return good(Bytes(bytes.begin(), bytes.end()), command.cdb[4]);
}

Answer read_capacity(const Command& command, const LogicalUnit& unit) {
  if (big_endian<std::uint32_t>(command.cdb, 2) != 0) return check_condition(invalid_field(2));
  Bytes data(8);
  put_big_endian(data, 0, unit.blocks - 1);
  put_big_endian(data, 4, kBlockBytes);
  return {.data = std::move(data), .sense = std::nullopt};
}

std::uint32_t first_block(const Command& command) { return big_endian<std::uint32_t>(command.cdb, 2); }
std::size_t blocks_of(const Command& command) { return big_endian<std::uint16_t>(command.cdb, 7); }

}  // namespace

// Below 256 a LUN is a unit of the only bus, from there on it is flat.
Lun lun_bytes(std::uint32_t lun) {
  constexpr std::uint16_t kFlat = 0x4000;
  Lun bytes{};
  put_big_endian(bytes, 0, static_cast<std::uint16_t>(lun < 256 ? lun : kFlat | lun));
  return bytes;
}

const LogicalUnit* Target::find(const Lun& lun) const {
  const auto flat = [&](const LogicalUnit& unit) {
    Lun bytes = lun_bytes(unit.lun);
    bytes[0] |= 0x40;
    return bytes == lun;
  };
  const auto is_it = [&](const LogicalUnit& unit) { return lun_bytes(unit.lun) == lun || flat(unit); };
  const auto found = std::ranges::find_if(port_.units, is_it);
  return found == port_.units.end() ? nullptr : &*found;
}

Answer Target::execute(const Command& command) const {
  if (operation_of(command) == Operation::kInquiry) return inquiry(command);
  if (operation_of(command) == Operation::kReportLuns) return report_luns(command);
  const LogicalUnit* const unit = find(command.lun);
  if (unit != nullptr) return execute(command, *unit);
  if (operation_of(command) == Operation::kRequestSense) return request_sense(command, kNoSuchUnit);
  return check_condition(kNoSuchUnit);
}

Answer Target::execute(const Command& command, const LogicalUnit& unit) const {
  switch (operation_of(command)) {
    case Operation::kTestUnitReady: return {};
    case Operation::kRequestSense: return request_sense(command, kNoSense);
    case Operation::kReadCapacity: return read_capacity(command, unit);
    case Operation::kRead: return read(command, unit);
    case Operation::kWrite: return write(command, unit);
    default: return check_condition(kUnknownOperation);
  }
}

Answer Target::inquiry(const Command& command) const {
  const LogicalUnit* const unit = find(command.lun);
  const std::uint8_t page = command.cdb[2];
  const std::size_t allocated = big_endian<std::uint16_t>(command.cdb, 3);
  if (command.cdb[1] == 0) {
    if (page != 0) return check_condition(invalid_field(2));
    return good(standard_inquiry(unit), allocated);
  }
  if (command.cdb[1] != 1) return check_condition(invalid_field(1));
  if (unit == nullptr) return check_condition(kNoSuchUnit);
  std::optional<Bytes> data = vital_product_data(*unit, page, number_);
  if (!data) return check_condition(invalid_field(2));
  return good(std::move(*data), allocated);
}

Answer Target::report_luns(const Command& command) const {
  constexpr std::uint8_t kWellKnownUnits = 1;
  constexpr std::uint8_t kAllUnits = 2;
  constexpr std::uint32_t kLeastAllocation = 16;
  const std::uint8_t selection = command.cdb[2];
  const auto allocated = big_endian<std::uint32_t>(command.cdb, 6);
  if (selection > kAllUnits) return check_condition(invalid_field(2));
  if (allocated < kLeastAllocation) return check_condition(invalid_field(6));

  Bytes data(8);
  if (selection != kWellKnownUnits) {
    for (const LogicalUnit& unit : port_.units) {
      const Lun lun = lun_bytes(unit.lun);
      data.insert(data.end(), lun.begin(), lun.end());
    }
  }
  put_big_endian(data, 0, static_cast<std::uint32_t>(data.size() - 8));
  return good(std::move(data), allocated);
}

std::optional<Sense> Target::refusal(const Command& command, const LogicalUnit& unit) const {
  if (blocks_of(command) * kBlockBytes > most_bytes_) return invalid_field(7);
  if (first_block(command) > unit.blocks) return beyond_end(first_block(command));
  if (unit.blocks - first_block(command) < blocks_of(command)) return beyond_end(unit.blocks);
  return std::nullopt;
}

Answer Target::read(const Command& command, const LogicalUnit& unit) const {
  if (const auto sense = refusal(command, unit)) return check_condition(*sense);
  Bytes data(blocks_of(command) * kBlockBytes);
  disks_.of(unit).read(std::uint64_t{first_block(command)} * kBlockBytes, data);
  return {.data = std::move(data), .sense = std::nullopt};
}

Answer Target::write(const Command& command, const LogicalUnit& unit) const {
  if (unit.read_only) return check_condition(kWriteProtected);
  if (const auto sense = refusal(command, unit)) return check_condition(*sense);
  const std::size_t bytes = blocks_of(command) * kBlockBytes;
  if (command.data.size() < bytes) return check_condition(kDataMissing);
  if (bytes > 0) disks_.of(unit).write(std::uint64_t{first_block(command)} * kBlockBytes, command.data.first(bytes));
  return {.data = {}, .taken = bytes, .sense = std::nullopt};
}

}  // namespace simulator::scsi
