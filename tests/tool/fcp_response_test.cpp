#include "fcp_response.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "fields.h"

namespace vaskdfc::tool {
namespace {

using Buffer = std::vector<std::uint8_t>;

constexpr std::uint8_t kBusy = 0x08;

Buffer response(std::uint8_t flags, std::uint8_t status, const Buffer& behind = {}) {
  Buffer bytes(24);
  bytes[10] = flags;
  bytes[11] = status;
  bytes[15] = 5;
  bytes.insert(bytes.end(), behind.begin(), behind.end());
  return bytes;
}

TEST(FcpResponse, tells_status_and_residue) {
  const auto fields = response_fields(response(0x08, kBusy));
  EXPECT_EQ(text_in(fields, "status"), "BUSY (08)");
  EXPECT_EQ(text_in(fields, "data_moved"), "less than announced");
  EXPECT_EQ(text_in(fields, "residue"), "5 bytes");
  EXPECT_EQ(text_in(response_fields(response(0x04, 0)), "data_moved"), "more than announced");
  EXPECT_EQ(text_in(response_fields(response(0, 0x99)), "status"), "unknown (99)");
}

TEST(FcpResponse, holds_sense_behind_its_own_information) {
  const Buffer sense{0x70, 0, 5};
  EXPECT_TRUE(std::ranges::equal(sense_in(response(0x02, 2, sense)), sense));
  Buffer with_information = response(0x03, 2, {1, 2, 3, 4, 0x70, 0, 5});
  with_information[23] = 4;
  EXPECT_TRUE(std::ranges::equal(sense_in(with_information), sense));
  with_information[20] = 0xFF;
  EXPECT_TRUE(sense_in(with_information).empty());
  EXPECT_TRUE(sense_in(response(0, 2, sense)).empty());
}

TEST(FcpResponse, says_how_a_command_ended_that_did_not_end_well) {
  EXPECT_EQ(refusal_text(response(0, 0)), "");
  EXPECT_EQ(refusal_text(response(0, 0x04)), "");
  EXPECT_EQ(refusal_text(response(0, kBusy)), "ended with status BUSY (08)");
  EXPECT_EQ(refusal_text(response(0, 2)), "ended with status CHECK CONDITION (02)");
  EXPECT_EQ(refusal_text(response(0x02, 2, {0x70})), "") << "the sense says why";
}

TEST(FcpResponse, may_end_anywhere) {
  const Buffer whole = response(0x03, 2, {1, 2, 3, 4, 0x70});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    sense_in(Bytes(whole).first(size));
    response_fields(Bytes(whole).first(size));
  }
  EXPECT_EQ(refusal_text({}), "sent no whole response");
}

}  // namespace
}  // namespace vaskdfc::tool
