#include "common_transport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vaskdfc::tool {
namespace {

using Buffer = std::vector<std::uint8_t>;

Buffer answer_of(std::uint8_t low_code, const Buffer& payload) {
  Buffer bytes(16);
  bytes[8] = 0x80;
  bytes[9] = low_code;
  bytes.insert(bytes.end(), payload.begin(), payload.end());
  return bytes;
}

TEST(CommonTransport, asks_the_name_server_with_a_preamble_and_the_key) {
  const Buffer request = name_request(kNameQueries[0], Buffer{0, 1, 2, 3});
  EXPECT_EQ(request, (Buffer{1, 0, 0, 0, 0xFC, 2, 0, 0, 0x01, 0x00, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3}));
}

TEST(CommonTransport, tells_accepts_from_rejects) {
  const Buffer accept = answer_of(0x02, {7, 8});
  ASSERT_TRUE(parse_ct_answer(accept));
  EXPECT_TRUE(parse_ct_answer(accept)->accepted);
  EXPECT_TRUE(std::ranges::equal(parse_ct_answer(accept)->payload, Buffer{7, 8}));

  Buffer reject = answer_of(0x01, {});
  reject[13] = 9;
  reject[14] = 1;
  ASSERT_TRUE(parse_ct_answer(reject));
  EXPECT_FALSE(parse_ct_answer(reject)->accepted);
  EXPECT_EQ(rejection_text(*parse_ct_answer(reject)), "unable to perform command request (9), port identifier not registered (1)");
  reject[13] = 0xEE;
  EXPECT_EQ(rejection_text(*parse_ct_answer(reject)), "unknown (ee), port identifier not registered (1)");
}

TEST(CommonTransport, takes_nothing_else_for_an_answer) {
  EXPECT_FALSE(parse_ct_answer(answer_of(0x03, {})));
  const Buffer accept = answer_of(0x02, {});
  EXPECT_FALSE(parse_ct_answer(Bytes(accept).first(15)));
  EXPECT_FALSE(parse_ct_answer({}));
}

Buffer object_of(std::uint32_t size = 592) {
  Buffer object(size);
  object[0] = 0x01;
  object[2] = 0x01;
  object[3] = 0x22;
  object[4] = 0x10;
  object[12] = 3;
  std::ranges::copy(std::string("abc"), object.begin() + 13);
  object[268] = 0x20;
  object[276] = 255;  // a length, and no text
  object[562] = 0x01;
  return object;
}

TEST(NamedPorts, are_read_from_the_object) {
  const auto port = parse_named_port(object_of());
  ASSERT_TRUE(port);
  EXPECT_EQ(port->fc_id, 0x000122U);
  EXPECT_EQ(port_type_name(port->type), "N_Port");
  EXPECT_EQ(port->port_wwn.wwn[0], 0x10);
  EXPECT_EQ(port->node_wwn.wwn[0], 0x20);
  EXPECT_EQ(port->symbolic_port_name, "abc");
  EXPECT_EQ(port->symbolic_node_name, "");
  ASSERT_EQ(port->fc4_types.size(), 32U);
  EXPECT_EQ(port->fc4_types[2], 0x01);
}

TEST(NamedPorts, need_the_whole_object) {
  const Buffer whole = object_of();
  for (std::size_t size = 0; size < whole.size(); ++size) EXPECT_FALSE(parse_named_port(Bytes(whole).first(size)));
}

TEST(PortIds, end_with_the_last_or_with_the_bytes) {
  EXPECT_EQ(parse_port_ids(Buffer{0, 1, 2, 3, 0x80, 1, 2, 4, 0, 9, 9, 9}), (std::vector<std::uint32_t>{0x010203, 0x010204}));
  EXPECT_EQ(parse_port_ids(Buffer{0, 1, 2, 3, 0, 1}), std::vector<std::uint32_t>{0x010203});
  EXPECT_TRUE(parse_port_ids({}).empty());
}

}  // namespace
}  // namespace vaskdfc::tool
