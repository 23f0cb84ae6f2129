#include "link_records.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "fields.h"

namespace vaskdfc::tool {
namespace {

template <std::size_t kBytes>
void put(std::array<std::uint8_t, kBytes>& record, std::size_t at, std::initializer_list<std::uint8_t> bytes) {
  std::ranges::copy(bytes, record.begin() + static_cast<std::ptrdiff_t>(at));
}

std::array<std::uint8_t, 168> link_record() {
  std::array<std::uint8_t, 168> record{};
  put(record, 0, {2, 0, 0, 0, 2, 0, 0, 0, 0x00, 0x0B, 0x02, 0, 0x80, 0x3E, 0, 0, 5, 0, 0, 0, 1, 1, 1, 16});
  put(record, 24, {0x10, 0, 0, 0x5A, 0x41, 0x56, 3, 0x10});
  put(record, 48, {'f', '-', 'b'});
  put(record, 152, {0x38, 0, 0, 0, 0x20, 0, 0, 0, 0, 8, 0, 0, 2, 0, 0, 0});
  return record;
}

TEST(LinkRecord, has_every_field_where_the_driver_puts_it) {
  const auto fields = link_fields(link_record());
  EXPECT_EQ(text_in(fields, "state"), "online");
  EXPECT_EQ(text_in(fields, "topology"), "fabric");
  EXPECT_EQ(text_in(fields, "fc_id"), "0x020b00");
  EXPECT_EQ(text_in(fields, "rate"), "16000 Mb/s");
  EXPECT_EQ(text_in(fields, "generation"), "5");
  EXPECT_EQ(text_in(fields, "loopback"), "internal");
  EXPECT_EQ(text_in(fields, "protocol"), "FCoE");
  EXPECT_EQ(text_in(fields, "configured_topology"), "1");
  EXPECT_EQ(text_in(fields, "configured_speed"), "16");
  EXPECT_EQ(text_in(fields, "port_wwn"), "10:00:00:5a:41:56:03:10");
  EXPECT_EQ(text_in(fields, "fabric"), "f-b");
  EXPECT_EQ(text_in(fields, "speed"), "16 Gbit/s");
  EXPECT_EQ(text_in(fields, "supported_speeds"), "4 Gbit/s, 8 Gbit/s, 16 Gbit/s");
  EXPECT_EQ(text_in(fields, "max_frame_size"), "2048 bytes");
  EXPECT_EQ(text_in(fields, "discovered_ports"), "2");
}

TEST(LinkRecord, keeps_numbers_without_a_known_meaning) {
  auto record = link_record();
  record[4] = 9;
  record[20] = 7;
  record[21] = 8;
  const auto fields = link_fields(record);
  EXPECT_EQ(text_in(fields, "topology"), "9");
  EXPECT_EQ(text_in(fields, "loopback"), "7");
  EXPECT_EQ(text_in(fields, "protocol"), "8");
}

// Fields that are whole before a record's end are known, all others are not.
TEST(LinkRecord, may_end_anywhere) {
  const auto record = link_record();
  const std::size_t fields = link_fields(record).size();
  std::size_t known_before = 0;
  for (std::size_t bytes = 0; bytes <= record.size(); ++bytes) {
    std::size_t known = 0;
    for (const Field& field : link_fields(std::span(record).first(bytes))) known += field.cell.value.is_null() ? 0 : 1;
    EXPECT_GE(known, known_before) << bytes;
    known_before = known;
  }
  EXPECT_EQ(known_before, fields);
  EXPECT_EQ(text_in(link_fields(std::span(record).first(11)), "fc_id"), "-");
  EXPECT_EQ(text_in(link_fields(std::span(record).first(12)), "fc_id"), "0x020b00");
}

TEST(NodeRecord, tells_what_the_flags_say) {
  std::array<std::uint8_t, 28> record{};
  put(record, 0, {3, 0, 1, 0, 0, 3, 1, 0});
  put(record, 24, {7, 1, 0, 0});
  auto fields = node_fields(record);
  EXPECT_EQ(text_in(fields, "position"), "3");
  EXPECT_EQ(text_in(fields, "fc_id"), "0x010300");
  EXPECT_EQ(text_in(fields, "fcp"), "yes");
  EXPECT_EQ(text_in(fields, "has_units"), "no");
  EXPECT_EQ(text_in(fields, "units"), "263");
  record[2] = 0x42;
  fields = node_fields(record);
  EXPECT_EQ(text_in(fields, "fcp"), "no");
  EXPECT_EQ(text_in(fields, "has_units"), "yes");
  EXPECT_EQ(text_in(fields, "flags"), "0x0042");
}

TEST(IoRecord, has_counters_of_four_and_of_eight_bytes) {
  std::array<std::uint8_t, 96> record{};
  put(record, 0, {1, 2, 0, 0});
  put(record, 8, {0, 0, 0, 0, 1});
  put(record, 28, {0xFF, 0xFF, 0xFF, 0xFF});
  const Section section = io_section(record);
  EXPECT_EQ(section.records[0][1].value, 513);
  EXPECT_EQ(section.records[2][1].value, std::uint64_t{1} << 32);
  EXPECT_EQ(section.records[5][1].text, "not supported");
  EXPECT_TRUE(section.records[5][1].value.is_null());
}

TEST(IoRecord, may_end_anywhere) {
  const std::array<std::uint8_t, 96> record{};
  const auto known = [&](std::size_t bytes) {
    return std::ranges::count_if(io_section(std::span(record).first(bytes)).records,
                                 [](const Record& counter) { return !counter[1].value.is_null(); });
  };
  EXPECT_EQ(known(0), 0);
  EXPECT_EQ(known(3), 0);
  EXPECT_EQ(known(4), 1);
  EXPECT_EQ(known(15), 2);
  EXPECT_EQ(known(16), 3);
  EXPECT_EQ(known(96), 18);
}

TEST(Vpd, names_the_texts_of_selectors_that_it_knows) {
  std::array<std::uint8_t, 616> record{};
  put(record, 0, {1});
  put(record, 4, {'V'});
  put(record, 260, {'C', '2'});
  put(record, 596, {0x41, 0x5A, 0, 0, 0x03, 0x56, 0, 0, 4, 0, 0, 0, 3, 0, 0, 0, 3});
  Section texts = vpd_texts_section();
  add_vpd_texts(texts, record);
  ASSERT_EQ(texts.records.size(), 3);
  EXPECT_EQ(texts.records[1][2].text, "engineering change");
  EXPECT_EQ(texts.records[1][3].text, "C2");
  EXPECT_EQ(text_in(vpd_fields(record), "pci_device"), "0x00005603");
  EXPECT_EQ(vpd_selectors(record), 3);

  record[0] = 3;
  Section unknown = vpd_texts_section();
  add_vpd_texts(unknown, record);
  EXPECT_TRUE(unknown.records[0][2].value.is_null());
}

TEST(Vpd, may_end_anywhere) {
  std::array<std::uint8_t, 616> record{};
  record.fill('x');
  for (std::size_t bytes = 0; bytes <= record.size(); ++bytes) {
    Section texts = vpd_texts_section();
    add_vpd_texts(texts, std::span(record).first(bytes));
    EXPECT_EQ(texts.records[2][3].value.get<std::string>().size(), bytes <= 340 ? 0 : std::min<std::size_t>(bytes - 340, 256))
        << bytes;
    EXPECT_EQ(vpd_selectors(std::span(record).first(bytes)) != 0, bytes == record.size());
  }
}

}  // namespace
}  // namespace vaskdfc::tool
