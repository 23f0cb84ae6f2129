#include "scsi_exchange.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "decode.h"
#include "scsi_sense.h"

namespace vaskdfc::tool {
namespace {

constexpr std::uint8_t kNoSense = 0;
constexpr std::uint8_t kRecoveredError = 1;

// Sense data may only remark on a command that was carried out.
bool was_done(Bytes sense) {
  if (sense.empty()) return true;
  const auto parsed = parse_sense(sense);
  return parsed && (parsed->key == kNoSense || parsed->key == kRecoveredError);
}

}  // namespace

Argument add_unit_arguments(const Command& command, UnitArguments& arguments) {
  command.add_option("ADAPTER", arguments.adapter, kAdapterHelp).required();
  command.add_option("TARGET", arguments.target, "Port WWN of the target").required();
  return command.add_option("LUN", arguments.lun, "Logical unit: a number, or 16 hexadecimal digits with 0x");
}

Section unit_section(const UnitAddress& unit) {
  return record_section("unit", "Logical unit",
                        {{"adapter", "Adapter", number_cell(unit.adapter)},
                         {"target_port", "Target port", wwn_cell(unit.target)},
                         {"lun", "LUN", text_cell(lun_text(unit.lun))}});
}

UnitSession::UnitSession(const UnitArguments& arguments) {
  unit_.target = wwn_argument("TARGET", arguments.target, "\"vaskdfc luns ADAPTER\" shows the target ports that there are");
  unit_.lun = lun_argument(arguments.lun);
  session_.emplace();
  unit_.adapter = session_->find(arguments.adapter);
}

Answer ask(const UnitAddress& unit, const std::string& operation, std::uint32_t room, const Exchange& exchange, Bytes out) {
  Answer answer{.operation = operation, .data = {out.begin(), out.end()}, .sense = {}};
  answer.data.resize(std::max<std::size_t>(room, out.size()));
  std::array<std::uint8_t, DFC_SCSI_SENSE_BYTES> sense{};
  auto data_bytes = static_cast<std::uint32_t>(answer.data.size());
  std::uint32_t sense_bytes = 0;
  watch_driver_calls();
  const std::uint32_t result = exchange(answer.data.data(), &data_bytes, sense.data(), &sense_bytes);
  if (result != HBA_STATUS_OK) {
    throw operation_failure(fmt::format("the command to LUN {} of {} failed", lun_text(unit.lun), wwn_text(unit.target)),
                            unit.adapter, operation, Results::kHba, result);
  }
  answer.data.resize(std::min<std::size_t>(data_bytes, answer.data.size()));
  const Bytes received = part(sense, 0, sense_bytes);
  answer.sense.assign(received.begin(), received.end());
  return answer;
}

const Answer& completed(const UnitAddress& unit, const Answer& answer) {
  if (was_done(answer.sense)) return answer;
  throw with_hint(operation_failure(fmt::format("LUN {} of {} refused the command: {}", lun_text(unit.lun), wwn_text(unit.target),
                                                sense_text(answer.sense)),
                                    unit.adapter, answer.operation, Results::kHba, HBA_STATUS_OK),
                  "\"vaskdfc scsi luns\" shows the units that the target has");
}

Answer inquiry(const UnitAddress& unit, std::optional<std::uint8_t> page) {
  constexpr std::uint32_t kMostBytes = 255;  // of an allocation length of 8 bits
  return ask(unit, "SendScsiInquiry", kMostBytes, [&](void* data, std::uint32_t* bytes, void* sense, std::uint32_t* senses) {
    return SendScsiInquiry(unit.adapter, &unit.target, lun_in_memory(unit.lun), page ? 1 : 0, page.value_or(0), data, bytes, sense,
                           senses);
  });
}

Capacity read_capacity(const UnitAddress& unit) {
  constexpr std::uint32_t kRoom = 8;
  const Answer answer =
      ask(unit, "SendReadCapacity", kRoom, [&](void* data, std::uint32_t* bytes, void* sense, std::uint32_t* senses) {
        return SendReadCapacity(unit.adapter, &unit.target, lun_in_memory(unit.lun), data, bytes, sense, senses);
      });
  const auto capacity = parse_capacity(completed(unit, answer).data);
  if (capacity) return *capacity;
  throw operation_failure(fmt::format("LUN {} answered {} bytes, which are no capacity", lun_text(unit.lun), answer.data.size()),
                          unit.adapter, answer.operation, Results::kHba, HBA_STATUS_OK);
}

}  // namespace vaskdfc::tool
