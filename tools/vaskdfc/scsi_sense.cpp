#include "scsi_sense.h"

#include <fmt/format.h>

#include <array>

#include "decode.h"

namespace vaskdfc::tool {
namespace {

constexpr std::array<const char*, 16> kSenseKeys{"NO SENSE",       "RECOVERED ERROR", "NOT READY",      "MEDIUM ERROR",
                                                 "HARDWARE ERROR", "ILLEGAL REQUEST", "UNIT ATTENTION", "DATA PROTECT",
                                                 "BLANK CHECK",    "VENDOR SPECIFIC", "COPY ABORTED",   "ABORTED COMMAND",
                                                 "EQUAL",          "VOLUME OVERFLOW", "MISCOMPARE",     "COMPLETED"};

struct AdditionalSense {
  std::uint8_t code;
  std::uint8_t qualifier;
  const char* name;
};

// What disks and arrays say most.
constexpr std::array kAdditionalSenses{
    AdditionalSense{0x00, 0x00, "no additional sense information"},
    AdditionalSense{0x04, 0x00, "logical unit not ready, cause not reportable"},
    AdditionalSense{0x04, 0x01, "logical unit is in process of becoming ready"},
    AdditionalSense{0x04, 0x02, "logical unit not ready, initializing command required"},
    AdditionalSense{0x04, 0x03, "logical unit not ready, manual intervention required"},
    AdditionalSense{0x04, 0x0A, "logical unit not accessible, asymmetric access state transition"},
    AdditionalSense{0x04, 0x0B, "logical unit not accessible, target port in standby state"},
    AdditionalSense{0x04, 0x0C, "logical unit not accessible, target port in unavailable state"},
    AdditionalSense{0x08, 0x00, "logical unit communication failure"},
    AdditionalSense{0x0C, 0x00, "write error"},
    AdditionalSense{0x11, 0x00, "unrecovered read error"},
    AdditionalSense{0x1A, 0x00, "parameter list length error"},
    AdditionalSense{0x1D, 0x00, "miscompare during verify operation"},
    AdditionalSense{0x20, 0x00, "invalid command operation code"},
    AdditionalSense{0x21, 0x00, "logical block address out of range"},
    AdditionalSense{0x24, 0x00, "invalid field in CDB"},
    AdditionalSense{0x25, 0x00, "logical unit not supported"},
    AdditionalSense{0x26, 0x00, "invalid field in parameter list"},
    AdditionalSense{0x27, 0x00, "write protected"},
    AdditionalSense{0x28, 0x00, "not ready to ready change, medium may have changed"},
    AdditionalSense{0x29, 0x00, "power on, reset, or bus device reset occurred"},
    AdditionalSense{0x2A, 0x01, "mode parameters changed"},
    AdditionalSense{0x2A, 0x06, "asymmetric access state changed"},
    AdditionalSense{0x3A, 0x00, "medium not present"},
    AdditionalSense{0x3F, 0x03, "INQUIRY data has changed"},
    AdditionalSense{0x3F, 0x0E, "reported LUNs data has changed"},
    AdditionalSense{0x44, 0x00, "internal target failure"},
    AdditionalSense{0x47, 0x00, "SCSI parity error"},
    AdditionalSense{0x4B, 0x00, "data phase error"},
    AdditionalSense{0x4E, 0x00, "overlapped commands attempted"},
};

constexpr std::uint8_t kInformationDescriptor = 0x00;

Sense fixed_sense(Bytes bytes) {
  Sense sense;
  sense.key = number_at<std::uint8_t>(bytes, 2).value_or(0) & 0x0F;
  if ((bytes[0] & 0x80) != 0) sense.information = number_at<std::uint32_t>(bytes, 3);
  sense.code = number_at<std::uint8_t>(bytes, 12).value_or(0);
  sense.qualifier = number_at<std::uint8_t>(bytes, 13).value_or(0);
  return sense;
}

Sense descriptor_sense(Bytes bytes) {
  Sense sense;
  sense.key = number_at<std::uint8_t>(bytes, 1).value_or(0) & 0x0F;
  sense.code = number_at<std::uint8_t>(bytes, 2).value_or(0);
  sense.qualifier = number_at<std::uint8_t>(bytes, 3).value_or(0);
  Bytes descriptors = part(bytes, 8, number_at<std::uint8_t>(bytes, 7).value_or(0));
  while (descriptors.size() >= 2) {
    const bool is_valid = number_at<std::uint8_t>(descriptors, 2).value_or(0) >> 7 == 1;
    if (descriptors[0] == kInformationDescriptor && is_valid) sense.information = number_at<std::uint64_t>(descriptors, 4);
    descriptors = part(descriptors, 2U + descriptors[1]);
  }
  return sense;
}

}  // namespace

std::optional<Sense> parse_sense(Bytes bytes) {
  if (bytes.empty()) return std::nullopt;
  const std::uint8_t response = bytes[0] & 0x7F;
  if (response < 0x70 || response > 0x73) return std::nullopt;
  Sense sense = response < 0x72 ? fixed_sense(bytes) : descriptor_sense(bytes);
  sense.deferred = response % 2 == 1;
  return sense;
}

std::string sense_key_name(std::uint8_t key) { return kSenseKeys[key & 0x0F]; }

std::string additional_sense_name(std::uint8_t code, std::uint8_t qualifier) {
  for (const AdditionalSense& sense : kAdditionalSenses) {
    if (sense.code == code && sense.qualifier == qualifier) return sense.name;
  }
  return "";
}

std::string sense_text(Bytes bytes) {
  const auto sense = parse_sense(bytes);
  if (!sense) return fmt::format("sense data of an unknown form: {:02x}", fmt::join(bytes, " "));
  const std::string name = additional_sense_name(sense->code, sense->qualifier);
  return fmt::format("{}{}{}{} ({:x}/{:02x}/{:02x})", sense->deferred ? "deferred " : "", sense_key_name(sense->key),
                     name.empty() ? "" : ": ", name, sense->key, sense->code, sense->qualifier);
}

std::vector<Field> sense_fields(Bytes bytes) {
  const auto sense = parse_sense(bytes);
  const bool has_any = !bytes.empty();
  const auto when_parsed = [&](auto cell) { return sense ? cell(*sense) : absent(); };
  return {{"sense", "Sense", has_any ? text_cell(sense_text(bytes)) : absent()},
          {"sense_key", "Sense key", when_parsed([](const Sense& found) { return text_cell(sense_key_name(found.key)); })},
          {"additional_sense", "Additional sense",
           when_parsed([](const Sense& found) { return text_cell(fmt::format("0x{:02x}{:02x}", found.code, found.qualifier)); })},
          {"information", "Information",
           when_parsed([](const Sense& found) { return found.information ? number_cell(*found.information) : absent(); })},
          {"sense_bytes", "Sense bytes", has_any ? hex_bytes_cell(bytes) : absent()}};
}

}  // namespace vaskdfc::tool
