// Configuration regions of adapters with the newer interface.
#include "transport/records/regions.h"

#include <algorithm>

#include "region_calls.h"

namespace {

using vaskdfc::kRegionSizes;

// The small scenario's adapter with these regions.
json with_regions(const char* regions) {
  json scenario = small_scenario();
  scenario["adapters"][0]["regions"] = json::parse(regions);
  return scenario;
}

TEST(Regions, start_out_empty) {
  in_process({}, [] {
    Session session;
    for (const auto& [region, size] : kRegionSizes) {
      const RegionDump empty = dump_region(session, 1, region);
      EXPECT_EQ(empty.header.status, 0u);
      EXPECT_EQ(empty.completion, 0xFFFDu) << region;
      EXPECT_EQ(empty.header.arg3, 0u);
    }
  });
}

TEST(Regions, hold_what_was_written_each_for_itself) {
  in_process({}, [] {
    Session session;
    std::size_t seed = 0;
    for (const auto& [region, size] : kRegionSizes) EXPECT_EQ(update_region(session, 1, region, pattern(size, ++seed)), 0u);
    seed = 0;
    for (const auto& [region, size] : kRegionSizes) {
      const RegionDump dump = dump_region(session, 1, region);
      EXPECT_EQ(dump.completion, 0u);
      EXPECT_EQ(dump.delivered(), pattern(size, ++seed)) << region;
      EXPECT_EQ(dump_region(session, 3, region).completion, 0xFFFDu) << "another adapter";
    }
  });
}

TEST(Regions, are_replaced_as_a_whole) {
  in_process({}, [] {
    Session session;
    for (const std::size_t seed : {1u, 2u}) {
      EXPECT_EQ(update_region(session, 1, 23, pattern(1024, seed)), 0u);
      EXPECT_EQ(dump_region(session, 1, 23).delivered(), pattern(1024, seed));
    }
  });
}

TEST(Regions, are_delivered_from_an_offset_and_no_further_than_wanted) {
  in_process({}, [] {
    Session session;
    const std::vector<std::uint8_t> image = pattern(1024, 5);
    ASSERT_EQ(update_region(session, 1, 23, image), 0u);
    struct Window {
      std::uint32_t offset, wanted, delivered;
    };
    for (const Window& window : {Window{0, 1024, 1024}, Window{0, 100, 100}, Window{0, 0xFFFFFFFF, 1024}, Window{1000, 1024, 24},
                                 Window{10, 0, 0}, Window{1023, 5, 1}, Window{1024, 1, 0}, Window{0xFFFFFFFF, 0xFFFFFFFF, 0}}) {
      const RegionDump dump = dump_region(session, 1, 23, window.offset, window.wanted);
      EXPECT_EQ(dump.completion, 0u);
      ASSERT_EQ(dump.header.arg3, window.delivered) << window.offset << " " << window.wanted;
      EXPECT_TRUE(std::equal(dump.data.bytes, dump.data.bytes + window.delivered, image.begin() + window.offset % 1024));
      EXPECT_TRUE(std::all_of(dump.data.bytes + window.delivered, std::end(dump.data.bytes), [](auto byte) { return byte == 0; }));
    }
  });
}

TEST(Regions, start_with_what_the_scenario_gives) {
  const json scenario = with_regions(R"([
    {"region": 23, "image": "52 47\n32 33 0 1 fF"}, {"region": 14, "image": ""},
    {"region": 22, "missing": "0xFFF7"}, {"region": 8, "missing": "0xFFF6"}, {"region": 0, "missing": "0xFFFD"}])");
  under_scenario(scenario, [] {
    Session session;
    std::vector<std::uint8_t> image{'R', 'G', '2', '3', 0x01, 0xFF};
    image.resize(1024);
    EXPECT_EQ(dump_region(session, 2, 23).delivered(), image);
    EXPECT_EQ(dump_region(session, 2, 14).delivered(), std::vector<std::uint8_t>(1000));
    for (const auto& [region, code] : {std::pair{22u, 0xFFF7u}, std::pair{8u, 0xFFF6u}, std::pair{0u, 0xFFFDu}}) {
      EXPECT_EQ(dump_region(session, 2, region).completion, code);
      EXPECT_EQ(dump_region(session, 2, region).header.arg3, 0u);
    }
    EXPECT_EQ(update_region(session, 2, 22, pattern(512, 9)), 0u);
    EXPECT_EQ(dump_region(session, 2, 22).completion, 0u);
    EXPECT_EQ(dump_region(session, 2, 22).delivered(), pattern(512, 9));
  });
}

TEST(Regions, that_no_adapter_has_are_empty_and_cannot_be_written) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t region : {24u, 31u, 0xFFFFFFFFu}) {
      EXPECT_EQ(dump_region(session, 1, region).completion, 0xFFFDu);
      EXPECT_EQ(update_region(session, 1, region, {}), std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
      EXPECT_EQ(update_region(session, 1, region, pattern(1024, 1)), std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
    }
  });
}

TEST(Regions, of_another_size_are_refused_and_nothing_is_written) {
  in_process({}, [] {
    Session session;
    for (const std::size_t size : {0u, 1u, 1020u, 1023u, 1025u, 4096u}) {
      EXPECT_EQ(update_region(session, 1, 23, pattern(size, 1)), std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
    }
    EXPECT_EQ(dump_region(session, 1, 23).completion, 0xFFFDu);
  });
}

TEST(Regions, only_the_second_dump_type_reads_them) {
  in_process({}, [] {
    Session session;
    ASSERT_EQ(update_region(session, 1, 23, pattern(1024, 1)), 0u);
    for (const std::uint32_t type : {1u, 3u, 4u}) {
      const RegionDump dump = dump_region(session, 1, 23, 0, 1024, type);
      EXPECT_EQ(dump.header.status, 0u);
      EXPECT_EQ(dump.completion, std::uint32_t{VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND});
      EXPECT_EQ(dump.header.arg3, 0u);
    }
    for (const std::uint32_t type : {0u, 5u, 0xFFFFFFFFu}) {
      EXPECT_EQ(dump_region(session, 1, 23, 0, 1024, type).header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
    }
  });
}

TEST(Regions, have_callbacks_only_on_running_adapters_of_the_newer_interface) {
  json scenario = small_scenario();
  for (const auto& [sli_mode, condition, status] :
       {std::tuple{3, "ok", VMKMGMT_SIM_DRIVER_NOT_SUPPORTED}, std::tuple{3, "failed", VMKMGMT_SIM_DRIVER_NOT_SUPPORTED},
        std::tuple{4, "failed", VMKMGMT_SIM_DRIVER_NOT_READY}, std::tuple{4, "ok", VMKMGMT_SIM_DRIVER_OK}}) {
    scenario["adapters"][0]["sli_mode"] = sli_mode;
    scenario["adapters"][0]["condition"] = condition;
    under_scenario(scenario, [expected = std::uint32_t{status}] {
      Session session;
      EXPECT_EQ(dump_region(session, 2, 23).header.status, expected);
      EXPECT_EQ(update_region(session, 2, 23, pattern(1024, 1)), expected);
    });
  }
}

}  // namespace
