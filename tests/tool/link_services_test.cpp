#include "link_services.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "fields.h"

namespace vaskdfc::tool {
namespace {

using Buffer = std::vector<std::uint8_t>;

bool all_absent(const std::vector<Field>& fields) {
  return std::ranges::all_of(fields, [](const Field& field) { return field.cell.value.is_null(); });
}

TEST(LinkServices, are_asked_with_their_command_word_first) {
  EXPECT_EQ(echo_request(Buffer{7, 8}), (Buffer{0x10, 0, 0, 0, 7, 8}));
  EXPECT_EQ(link_errors_request(0x010203), (Buffer{0x0F, 0, 0, 0, 0, 1, 2, 3}));
  EXPECT_EQ(identification_request(), (Buffer{0x78, 0, 0, 0, 0xDF, 0, 0, 0}));
}

TEST(LinkServices, tell_accepts_from_rejects) {
  const Buffer accept{0x02, 0, 0, 0, 5};
  ASSERT_TRUE(parse_link_answer(accept));
  EXPECT_TRUE(parse_link_answer(accept)->accepted);
  EXPECT_TRUE(std::ranges::equal(parse_link_answer(accept)->payload, Buffer{5}));

  Buffer reject{0x01, 0, 0, 0, 0, 0x0B, 0x2C, 0};
  ASSERT_TRUE(parse_link_answer(reject));
  EXPECT_FALSE(parse_link_answer(reject)->accepted);
  EXPECT_EQ(rejection_text(*parse_link_answer(reject)), "command not supported (b), request not supported (2c)");
  reject[5] = 0x0E;
  reject[6] = 0xEE;
  EXPECT_EQ(rejection_text(*parse_link_answer(reject)), "command already in progress (e), unknown (ee)");
}

TEST(LinkServices, take_nothing_else_for_an_answer) {
  for (const Buffer& bytes : {Buffer{}, Buffer{0x02, 0, 0}, Buffer{0x03, 0, 0, 0}, Buffer{0x01, 0, 0, 0, 0, 0x0B, 0x2C}}) {
    EXPECT_FALSE(parse_link_answer(bytes));
  }
}

TEST(LinkErrors, are_six_counters_of_which_some_may_be_missing) {
  Buffer payload;
  for (std::uint8_t i = 1; i <= 6; ++i) payload.insert(payload.end(), {0, 0, 1, i});
  const auto fields = link_error_fields(payload);
  ASSERT_EQ(fields.size(), 6U);
  EXPECT_EQ(text_in(fields, "link_failures"), "257");
  EXPECT_EQ(text_in(fields, "invalid_crcs"), "262");
  payload.pop_back();
  EXPECT_TRUE(link_error_fields(payload).back().cell.value.is_null());
  EXPECT_TRUE(all_absent(link_error_fields({})));
}

Buffer identification(std::uint8_t format) {
  Buffer payload(4 + 16 + 52);
  payload[0] = format;
  payload[1] = 16;
  payload[3] = 52;
  payload[4] = 0x10;
  payload[12] = 0x20;
  payload[20 + 19] = 11;
  payload[20 + 23] = 7;
  payload[20 + 27] = 2;
  payload[20 + 29] = 1;
  payload[20 + 30] = 0x1B;
  payload[20 + 31] = 0x58;
  payload[20 + 47] = 9;
  payload[20 + 51] = 3;
  return payload;
}

TEST(Identification, has_names_and_topology) {
  const auto fields = identification_fields(identification(0xDF));
  EXPECT_EQ(text_in(fields, "port_wwn"), "10:00:00:00:00:00:00:00");
  EXPECT_EQ(text_in(fields, "node_wwn"), "20:00:00:00:00:00:00:00");
  EXPECT_EQ(text_in(fields, "unit_type"), "11");
  EXPECT_EQ(text_in(fields, "port_number"), "7");
  EXPECT_EQ(text_in(fields, "attached_nodes"), "2");
  EXPECT_EQ(text_in(fields, "ip_version"), "1");
  EXPECT_EQ(text_in(fields, "udp_port"), "7000");
  EXPECT_EQ(text_in(fields, "ip_address"), "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 09");
  EXPECT_EQ(text_in(fields, "discovery_flags"), "3");
}

TEST(Identification, of_another_format_has_names_alone) {
  const auto fields = identification_fields(identification(0x00));
  EXPECT_EQ(text_in(fields, "port_wwn"), "10:00:00:00:00:00:00:00");
  EXPECT_EQ(text_in(fields, "unit_type"), "-");
}

TEST(Identification, ends_where_the_bytes_end) {
  const Buffer whole = identification(0xDF);
  for (std::size_t size = 0; size < whole.size(); ++size) identification_fields(Bytes(whole).first(size));
  EXPECT_TRUE(all_absent(identification_fields({})));
  EXPECT_EQ(text_in(identification_fields(Bytes(whole).first(11)), "port_wwn"), "-");
}

}  // namespace
}  // namespace vaskdfc::tool
