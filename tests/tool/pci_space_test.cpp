#include "pci_space.h"

#include <gtest/gtest.h>

#include <array>

#include "fields.h"

namespace vaskdfc::tool {
namespace {

using Space = std::array<std::uint8_t, 4096>;

void put(Space& space, std::size_t at, std::initializer_list<std::uint8_t> bytes) {
  std::ranges::copy(bytes, space.begin() + static_cast<std::ptrdiff_t>(at));
}

Space space_of_a_device() {
  Space space{};
  put(space, 0x00, {0x41, 0x5A, 0x03, 0x56, 0x06, 0x01, 0x10, 0x00, 0x02, 0x00, 0x04, 0x0C});
  put(space, 0x10, {0x04, 0x00, 0x00, 0xA0, 0x01, 0x00, 0x00, 0x00, 0x08, 0x00, 0x10, 0xB0, 0x01, 0xE0, 0x00, 0x00});
  put(space, 0x30, {0x01, 0x00, 0x08, 0xC0, 0x40});
  put(space, 0x40, {0x01, 0x50, 0x03, 0x00, 0x03, 0x01});
  put(space, 0x50, {0x11, 0x60, 0x1F, 0x80, 0x02, 0x20, 0x00, 0x00, 0x02, 0x30});
  put(space, 0x60, {0x10, 0x70, 0x02, 0x00});
  put(space, 0x68, {0x20, 0x00, 0x00, 0x00, 0x83, 0x00, 0x00, 0x00, 0x00, 0x00, 0x42, 0x00});
  put(space, 0x70, {0x7E, 0x00});
  put(space, 0x100, {0x01, 0x00, 0x01, 0x14, 0x01, 0x02, 0x03, 0x04});
  put(space, 0x140, {0x03, 0x00, 0x01, 0x00, 0x10, 0x03, 0x56, 0x41, 0x5A, 0x00, 0x00, 0x10});
  return space;
}

std::vector<std::string> details_of(const Section& section, std::size_t record) {
  return section.records.at(record)[3].value.get<std::vector<std::string>>();
}

TEST(PciSpace, has_a_header) {
  const auto fields = pci_header_fields(space_of_a_device());
  EXPECT_EQ(text_in(fields, "vendor"), "0x5a41");
  EXPECT_EQ(text_in(fields, "device"), "0x5603");
  EXPECT_EQ(text_in(fields, "class"), "0x0c0400");
  EXPECT_EQ(text_in(fields, "command_bits"), "memory space, bus master, SERR");
  EXPECT_EQ(text_in(fields, "status_bits"), "capabilities");
  EXPECT_EQ(text_in(fields, "option_rom"), "0xc0080000, enabled");
}

TEST(PciSpace, has_regions_of_memory_and_io_of_which_wide_ones_take_two_registers) {
  const auto fields = pci_header_fields(space_of_a_device());
  for (const Field& field : fields) {
    if (field.key != "regions") continue;
    EXPECT_EQ(field.cell.value, (std::vector<std::string>{"0: memory at 0x1a0000000, 64-bit",
                                                          "2: memory at 0xb0100000, 32-bit, prefetchable", "3: I/O at 0xe000"}));
  }
  EXPECT_EQ(fields.back().key, "regions");
}

TEST(PciSpace, has_capabilities_of_both_lists) {
  const Section section = pci_capabilities_section(space_of_a_device());
  std::vector<std::string> names;
  for (const Record& record : section.records) names.push_back(record[2].text);
  EXPECT_EQ(names, (std::vector<std::string>{"power management", "MSI-X", "PCI Express", "-", "advanced error reporting",
                                             "device serial number"}));
  EXPECT_EQ(details_of(section, 0), (std::vector<std::string>{"version 3", "power state D3", "PME on"}));
  EXPECT_EQ(details_of(section, 1), (std::vector<std::string>{"32 vectors", "enable on", "mask off", "table in region 2 at 0x2000",
                                                              "pending bits in region 2 at 0x3000"}));
  EXPECT_EQ(details_of(section, 2), (std::vector<std::string>{"endpoint", "version 2", "link of at most 8 lanes at 8 GT/s",
                                                              "link now 4 lanes at 5 GT/s", "payload 256 bytes"}));
  EXPECT_EQ(details_of(section, 3), std::vector<std::string>{});
  EXPECT_EQ(details_of(section, 4).front(), "uncorrectable errors 0x04030201");
  EXPECT_EQ(details_of(section, 5), std::vector<std::string>{"10:00:00:5a:41:56:03:10"});
  EXPECT_EQ(section.records[3][1].text, "0x7e");
}

TEST(PciSpace, may_end_anywhere) {
  const Space space = space_of_a_device();
  std::size_t before = 0;
  for (std::size_t bytes = 0; bytes <= 0x180; ++bytes) {
    const std::size_t found = pci_capabilities_section(std::span(space).first(bytes)).records.size();
    EXPECT_GE(found, before) << bytes;
    before = found;
    EXPECT_EQ(text_in(pci_header_fields(std::span(space).first(bytes)), "device") == "-", bytes < 4) << bytes;
  }
  EXPECT_EQ(before, 6);
  EXPECT_EQ(details_of(pci_capabilities_section(std::span(space).first(0x5B)), 1), std::vector<std::string>{});
}

TEST(PciSpace, ends_lists_that_run_in_a_circle) {
  Space space = space_of_a_device();
  space[0x71] = 0x40;
  put(space, 0x140, {0x03, 0x00, 0x01, 0x10});
  EXPECT_EQ(pci_capabilities_section(space).records.size(), 6);
}

TEST(PciSpace, without_capabilities_has_none) {
  Space space = space_of_a_device();
  space[6] = 0;
  put(space, 0x100, {0xFF, 0xFF, 0xFF, 0xFF});
  EXPECT_TRUE(pci_capabilities_section(space).records.empty());
}

}  // namespace
}  // namespace vaskdfc::tool
