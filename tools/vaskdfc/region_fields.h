// What regions hold, in the fields that people compare and change.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "region_image.h"
#include "report.h"

namespace vaskdfc::tool {

std::string vlan_text(const std::optional<std::uint16_t>& vlan);
std::string names_text(std::span<const std::uint8_t, 16> names);
std::string connect_entry_text(const ConnectEntry& entry);

// A record of region 23: what it is called, and what it says; empty where that is not known.
std::string record_name(std::uint8_t type);
std::vector<std::string> decoded_fields(const Region23Record& record);

std::vector<Field> fcoe_fields(const std::optional<FcoeParameters>& parameters);
std::vector<Field> connect_list_fields(const std::vector<ConnectEntry>& entries);
std::vector<Field> link_down_fields(const std::optional<bool>& stays_down);

// Whole regions. Without an image the region is missing.
std::vector<Field> region14_fields(const std::optional<std::vector<std::uint8_t>>& image);
std::vector<Field> region22_fields(const std::optional<Region22Image>& image);
std::vector<Field> region23_fields(const std::optional<Region23Image>& image);

// The fields of the image that `region init` writes to region 23.
std::vector<Field> default_region23_fields();

// Groups of four bytes, as in 00112233 44556677.
std::string grouped_hex(std::span<const std::uint8_t> bytes);

}  // namespace vaskdfc::tool
