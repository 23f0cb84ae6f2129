#include "region_fields.h"

#include <fmt/format.h>
#include <vaskdfc/fcoe.h>

#include <algorithm>
#include <iterator>

#include "decode.h"

namespace vaskdfc::tool {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr const char* kMissing = "missing";

Field image_field(const std::string& state) { return {"image", "Image", text_cell(state)}; }

Cell vlan_cell(const std::optional<std::uint16_t>& vlan) { return vlan ? number_cell(*vlan) : Cell{nullptr, vlan_text(vlan)}; }

// Blank bytes read as those of a region that is missing.
Cell hex_or_blank(Bytes bytes) { return is_blank(bytes) ? absent() : text_cell(grouped_hex(bytes)); }

// What the records of region 23 say. What they do not say is not known.
struct Settings {
  std::string image;
  std::optional<FcoeParameters> fcoe;
  std::optional<std::size_t> connect_entries;
  std::optional<bool> stays_down;
  std::size_t other_records = 0;
  std::size_t bytes_behind = 0;
};

template <typename Decode>
auto decoded(const Region23Image& image, std::uint8_t type, Decode decode) -> decltype(decode(image.records.front())) {
  const Region23Record* const record = image.find(type);
  if (record == nullptr) return std::nullopt;
  return decode(*record);
}

Settings settings_in(const Region23Image& image) {
  const auto is_other = [](const Region23Record& record) { return record_name(record.type()).empty(); };
  Settings settings{.image = image.problem.empty() ? image.signature : image.problem,
                    .fcoe = decoded(image, kFcoeParametersRecord, fcoe_parameters_in),
                    .connect_entries = std::nullopt,
                    .stays_down = decoded(image, kLinkDownRecord, link_kept_down_in),
                    .other_records = static_cast<std::size_t>(std::ranges::count_if(image.records, is_other)),
                    .bytes_behind = image.bytes_behind};
  if (const auto entries = decoded(image, kConnectListRecord, connect_entries_in)) settings.connect_entries = entries->size();
  return settings;
}

std::vector<Field> fields_of(const Settings& settings) {
  std::vector<Field> fields{image_field(settings.image)};
  std::ranges::move(fcoe_fields(settings.fcoe), std::back_inserter(fields));
  fields.push_back(
      {"connect_entries", "FCF connect entries", settings.connect_entries ? number_cell(*settings.connect_entries) : absent()});
  std::ranges::move(link_down_fields(settings.stays_down), std::back_inserter(fields));
  fields.push_back({"other_records", "Other records", number_cell(settings.other_records)});
  fields.push_back({"bytes_behind", "Bytes behind the end", number_cell(settings.bytes_behind)});
  return fields;
}

}  // namespace

std::string vlan_text(const std::optional<std::uint16_t>& vlan) { return vlan ? fmt::format("{}", *vlan) : "none"; }

std::string names_text(std::span<const std::uint8_t, 16> names) {
  return fmt::format("{} {}", colon_text(names.first(8)), colon_text(names.last(8)));
}

std::string connect_entry_text(const ConnectEntry& entry) {
  return fmt::format("VLAN {}, names {}, flags 0x{:02x}", entry.vlan, names_text(entry.names), entry.flags);
}

std::string record_name(std::uint8_t type) {
  switch (type) {
    case kFcoeParametersRecord: return "FCoE parameters";
    case kConnectListRecord: return "FCF connect list";
    case kLinkDownRecord: return "persistent link down";
    default: return "";
  }
}

std::vector<std::string> decoded_fields(const Region23Record& record) {
  if (const auto parameters = fcoe_parameters_in(record)) {
    return {"FC-MAP " + colon_text(parameters->fc_map), "VLAN " + vlan_text(parameters->vlan)};
  }
  if (const auto entries = connect_entries_in(record)) {
    std::vector<std::string> fields{fmt::format("{} of {} entries in use", entries->size(), DFC_FCF_CONNECT_ENTRIES)};
    std::ranges::transform(*entries, std::back_inserter(fields), connect_entry_text);
    return fields;
  }
  if (const auto stays_down = link_kept_down_in(record)) return {*stays_down ? "the link stays down" : "the link comes up"};
  return {};
}

std::vector<Field> fcoe_fields(const std::optional<FcoeParameters>& parameters) {
  return {{"fc_map", "FC-MAP", parameters ? text_cell(colon_text(parameters->fc_map)) : absent()},
          {"vlan", "VLAN", parameters ? vlan_cell(parameters->vlan) : absent()}};
}

std::vector<Field> connect_list_fields(const std::vector<ConnectEntry>& entries) {
  std::vector<Field> fields;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    fields.push_back({fmt::format("entry_{}", i), fmt::format("Entry {}", i), text_cell(connect_entry_text(entries[i]))});
  }
  return fields;
}

std::vector<Field> link_down_fields(const std::optional<bool>& stays_down) {
  return {{"persistent_link_down", "Persistent link down", stays_down ? flag_cell(*stays_down) : absent()}};
}

std::vector<Field> region14_fields(const std::optional<std::vector<std::uint8_t>>& image) {
  constexpr std::size_t kRowBytes = 16;
  if (!image) return {image_field(kMissing)};
  std::vector<Field> fields{image_field("present")};
  for (std::size_t offset = 0; offset < image->size(); offset += kRowBytes) {
    const Bytes row = Bytes(*image).subspan(offset, std::min(kRowBytes, image->size() - offset));
    fields.push_back(
        {fmt::format("bytes_{}", offset), fmt::format("Bytes {}-{}", offset, offset + row.size() - 1), hex_or_blank(row)});
  }
  return fields;
}

std::vector<Field> region22_fields(const std::optional<Region22Image>& image) {
  if (!image) return {image_field(kMissing)};
  std::vector<Field> fields{image_field(image->problem.empty() ? image->signature : image->problem)};
  fields.push_back({"head", "Bytes 4-7", hex_or_blank(image->head)});
  for (const Region22Entry& entry : image->entries) {
    fields.push_back({fmt::format("entry_{}", entry.position), fmt::format("Entry {}", entry.position), hex_or_blank(entry.bytes)});
  }
  return fields;
}

std::vector<Field> region23_fields(const std::optional<Region23Image>& image) {
  return fields_of(image ? settings_in(*image) : Settings{.image = kMissing});
}

std::vector<Field> default_region23_fields() {
  return fields_of({.image = kRegion23Signature,
                    .fcoe = FcoeParameters{.fc_map = {0x0E, 0xFC, 0x00}, .vlan = 0},
                    .connect_entries = 0,
                    .stays_down = false});
}

std::string grouped_hex(Bytes bytes) {
  constexpr std::size_t kGroup = 4;
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) text += fmt::format("{}{:02x}", i != 0 && i % kGroup == 0 ? " " : "", bytes[i]);
  return text;
}

}  // namespace vaskdfc::tool
