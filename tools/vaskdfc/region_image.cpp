#include "region_image.h"

#include <fmt/format.h>
#include <vaskdfc/fcoe.h>
#include <vaskdfc/regions.h>

#include <algorithm>
#include <utility>

#include "decode.h"

namespace vaskdfc::tool {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kHeadBytes = 8;        // of both images: signature, version or format
constexpr std::size_t kRecordHeadBytes = 4;  // type, length, two bytes of the record's own
constexpr std::uint8_t kEndMarker = 0xFF;
constexpr std::uint32_t kRegion23Version = 1;

std::uint16_t half_at(Bytes bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

std::uint32_t word_at(Bytes bytes, std::size_t offset) {
  return half_at(bytes, offset) | static_cast<std::uint32_t>(half_at(bytes, offset + 2)) << 16;
}

std::size_t nonzero(Bytes bytes) { return bytes.size() - static_cast<std::size_t>(std::ranges::count(bytes, 0)); }

// Reads the chain of records. Returns why it has no end, or nothing.
std::string read_chain(Bytes image, Region23Image& result) {
  std::size_t offset = kHeadBytes;
  while (offset + 1 < image.size()) {
    if (image[offset] == kEndMarker) {
      result.bytes_behind = nonzero(image.subspan(offset + 2));
      return "";
    }
    const std::size_t length = kRecordHeadBytes + std::size_t{4} * image[offset + 1];
    if (length > image.size() - offset) return fmt::format("the record at offset {} is longer than the image", offset);
    const Bytes bytes = image.subspan(offset, length);
    result.records.push_back({.offset = offset, .bytes = {bytes.begin(), bytes.end()}});
    offset += length;
  }
  return "the records have no end marker";
}

std::string signature_in(Bytes image) { return text_of(image.first(std::min<std::size_t>(image.size(), 4))); }

std::string problem_of_head(Bytes image, const std::string& signature, const char* expected) {
  if (image.size() < kHeadBytes) return fmt::format("{} bytes are no image", image.size());
  if (signature != expected) return fmt::format("the signature is not {}", expected);
  return "";
}

}  // namespace

std::size_t Region23Record::data_bytes() const { return bytes.size() - kRecordHeadBytes; }

const Region23Record* Region23Image::find(std::uint8_t type) const {
  const auto found = std::ranges::find(records, type, &Region23Record::type);
  return found == records.end() ? nullptr : &*found;
}

Region23Image parse_region23(Bytes image) {
  Region23Image result{.signature = signature_in(image)};
  result.problem = problem_of_head(image, result.signature, kRegion23Signature);
  if (!result.problem.empty()) return result;
  result.version = word_at(image, 4);
  if (*result.version != kRegion23Version) {
    result.problem = fmt::format("the version is not {}", kRegion23Version);
    return result;
  }
  result.problem = read_chain(image, result);
  return result;
}

std::optional<FcoeParameters> fcoe_parameters_in(const Region23Record& record) {
  constexpr std::size_t kDataBytes = 8;  // the length byte is the version of the record as well
  constexpr std::uint8_t kVlanValid = 1;
  constexpr std::uint32_t kVlanMask = 0xFFF;
  if (record.type() != kFcoeParametersRecord || record.data_bytes() != kDataBytes) return std::nullopt;
  FcoeParameters parameters;
  std::copy_n(record.bytes.begin() + 4, parameters.fc_map.size(), parameters.fc_map.begin());
  if ((record.bytes[3] & kVlanValid) != 0) parameters.vlan = static_cast<std::uint16_t>(word_at(record.bytes, 8) & kVlanMask);
  return parameters;
}

std::optional<std::vector<ConnectEntry>> connect_entries_in(const Region23Record& record) {
  constexpr std::size_t kEntryBytes = 20;
  constexpr std::uint16_t kInUse = 1;
  if (record.type() != kConnectListRecord || record.data_bytes() != DFC_FCF_CONNECT_ENTRIES * kEntryBytes) return std::nullopt;
  std::vector<ConnectEntry> entries;
  for (std::size_t offset = kRecordHeadBytes; offset < record.bytes.size(); offset += kEntryBytes) {
    const Bytes bytes = Bytes(record.bytes).subspan(offset, kEntryBytes);
    ConnectEntry entry{.flags = half_at(bytes, 0), .vlan = half_at(bytes, 2)};
    std::ranges::copy(bytes.subspan(4), entry.names.begin());
    if ((entry.flags & kInUse) != 0) entries.push_back(entry);
  }
  return entries;
}

std::optional<bool> link_kept_down_in(const Region23Record& record) {
  constexpr std::size_t kDataBytes = 8;
  if (record.type() != kLinkDownRecord || record.data_bytes() != kDataBytes) return std::nullopt;
  // Two flags, each behind a byte that says whether it is the one in use. They say that the link may be up.
  for (const std::size_t offset : {std::size_t{4}, std::size_t{8}}) {
    if (record.bytes[offset] == 1) return record.bytes[offset + 2] == 0;
  }
  return std::nullopt;
}

Region22Image parse_region22(Bytes image) {
  Region22Image result{.signature = signature_in(image)};
  result.problem = problem_of_head(image, result.signature, kRegion22Signature);
  if (!result.problem.empty()) return result;
  const Bytes head = image.subspan(4, kHeadBytes - 4);
  result.head.assign(head.begin(), head.end());
  for (std::size_t offset = kHeadBytes; offset < image.size(); offset += sizeof(dfc_region22_entry)) {
    const Bytes bytes = image.subspan(offset, std::min(sizeof(dfc_region22_entry), image.size() - offset));
    result.entries.push_back({.position = result.entries.size(), .offset = offset, .bytes = {bytes.begin(), bytes.end()}});
  }
  return result;
}

Region22Image blank_region22() { return {.signature = kRegion22Signature, .head = {1, 0, 0, 0}}; }

bool is_blank(Bytes bytes) { return nonzero(bytes) == 0; }

}  // namespace vaskdfc::tool
