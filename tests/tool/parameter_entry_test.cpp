#include "parameter_entry.h"

#include <gtest/gtest.h>

#include <array>

#include "fields.h"

namespace vaskdfc::tool {
namespace {

std::array<std::uint8_t, 132> entry() {
  std::array<std::uint8_t, 132> bytes{};
  const auto put = [&](std::size_t at, const std::string& text) { std::ranges::copy(text, bytes.begin() + static_cast<int>(at)); };
  put(0, "link_speed");
  bytes[32] = 1;
  bytes[37] = 1;
  bytes[40] = 8;
  bytes[44] = 16;
  bytes[48] = 3;
  put(52, "the fastest that is tried");
  return bytes;
}

TEST(ParameterEntry, has_every_field_where_the_driver_puts_it) {
  const Parameter parameter = parse_parameter(2, entry());
  EXPECT_EQ(parameter.position, 2);
  EXPECT_EQ(parameter.name, "link_speed");
  EXPECT_EQ(parameter.meaning, "the fastest that is tried");
  EXPECT_EQ(parameter.least, 1);
  EXPECT_EQ(parameter.most, 256);
  EXPECT_EQ(parameter.initial, 8);
  EXPECT_EQ(parameter.value, 16);
  EXPECT_TRUE(parameter.needs_restart);
  EXPECT_TRUE(parameter.waits);
}

TEST(ParameterEntry, may_end_anywhere) {
  const auto bytes = entry();
  for (std::size_t count = 0; count <= bytes.size(); ++count) {
    const Parameter parameter = parse_parameter(0, std::span(bytes).first(count));
    EXPECT_EQ(parameter.least.has_value(), count >= 36) << count;
    EXPECT_EQ(parameter.value.has_value(), count >= 48) << count;
    EXPECT_EQ(parameter.needs_restart, count >= 52) << count;
    EXPECT_EQ(parameter.name, std::string("link_speed").substr(0, count)) << count;
  }
  EXPECT_EQ(text_in(parameter_fields(parse_parameter(0, {})), "value"), "-");
}

TEST(ParameterEntry, is_found_by_its_name_before_its_position) {
  std::vector<Parameter> parameters(3);
  for (std::uint32_t i = 0; i < 3; ++i) parameters[i].position = i;
  parameters[0].name = "2";
  parameters[1].name = "fdmi";
  EXPECT_EQ(find_parameter(parameters, "fdmi"), &parameters[1]);
  EXPECT_EQ(find_parameter(parameters, "2"), &parameters[0]);
  EXPECT_EQ(find_parameter(parameters, "0x1"), &parameters[1]);
  EXPECT_EQ(find_parameter(parameters, "3"), nullptr);
  EXPECT_EQ(find_parameter(parameters, "FDMI"), nullptr);
}

}  // namespace
}  // namespace vaskdfc::tool
