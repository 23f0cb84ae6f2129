// Loopback tests, and what loopback does to the port.
#include <algorithm>
#include <bit>
#include <memory>

#include "record_fields.h"

namespace {

using vaskdfc::LoopbackData;

constexpr std::uint32_t kNewer = 3;
constexpr std::uint32_t kOlder = 7;
constexpr std::uint32_t kPlugged = 4;
constexpr std::uint32_t kFailed = 12;
constexpr std::uint32_t kInternal = 1;
constexpr std::uint32_t kExternal = 4;
constexpr std::uint32_t kWrongMode = VMKMGMT_SIM_DRIVER_WRONG_MODE;

std::uint32_t configure(Session& session, std::uint32_t board, std::uint32_t mode) {
  return session.call<Callback::kLoopbackMode>({.brdno = board, .arg5 = mode, .arg7 = 10}).status;
}

std::uint32_t end(Session& session, std::uint32_t board) {
  return session.call<Callback::kDiagModeEnd>({.brdno = board, .arg7 = 15}).status;
}

std::uint32_t initialise_loop(Session& session, std::uint32_t board) {
  return session.call<Callback::kLip>({.brdno = board}).status;
}

struct Result {
  dfc_mgmt_hdr header;
  std::vector<std::uint8_t> received;
};

// What comes back of some bytes.
Result run(Session& session, std::uint32_t board, const std::vector<std::uint8_t>& bytes) {
  const auto sent = std::make_unique<LoopbackData>(garbage<LoopbackData>());
  const auto received = std::make_unique<LoopbackData>(garbage<LoopbackData>());
  std::ranges::copy(bytes, sent->bytes);
  const auto count = static_cast<std::uint32_t>(bytes.size());
  const dfc_mgmt_hdr header = session.call<Callback::kLoopbackTest>({.brdno = board, .arg2 = count}, *sent, *received);
  if (header.arg3 < sizeof(*received)) {
    EXPECT_EQ(received->bytes[header.arg3], 0xA5) << "beyond what came back";
  }
  return {header, {received->bytes, received->bytes + std::min<std::size_t>(header.arg3, sizeof(*received))}};
}

std::uint32_t port_state(Session& session, std::uint32_t board) {
  dfc_link_info link;
  session.call<Callback::kLinkInfo>({.brdno = board}, link);
  return word(link, 0);
}

std::vector<std::uint32_t> events(Session& session, std::uint32_t board) {
  vaskdfc::EventReply reply;
  const dfc_mgmt_hdr header = session.call<Callback::kHbaGetEvent>({.brdno = board, .arg2 = 8}, reply);
  std::vector<std::uint32_t> codes;
  for (std::uint32_t i = 0; i < header.arg3; ++i) codes.push_back(word(reply, 20 * i));
  return codes;
}

TEST(Loopback, returns_what_is_sent_while_it_is_configured) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t board : {kNewer, kOlder}) {
      EXPECT_EQ(run(session, board, {1, 2, 3}).header.status, kWrongMode);
      EXPECT_EQ(configure(session, board, kInternal), 0u);
      for (const std::size_t size : {0u, 1u, 511u, 65536u}) {
        const auto sent = pattern(size, size);
        const Result result = run(session, board, sent);
        EXPECT_EQ(result.header.status, 0u);
        EXPECT_EQ(result.received, sent);
      }
      EXPECT_EQ(board == kNewer ? end(session, board) : initialise_loop(session, board), 0u);
      const Result after = run(session, board, {1, 2, 3});
      EXPECT_EQ(after.header.status, kWrongMode);
      EXPECT_EQ(after.header.arg3, 0u);
    }
  });
}

TEST(Loopback, of_more_than_the_record_holds_is_refused) {
  in_process({}, [] {
    Session session;
    configure(session, kNewer, kInternal);
    const auto sent = std::make_unique<LoopbackData>(), received = std::make_unique<LoopbackData>(garbage<LoopbackData>());
    for (const std::uint32_t bytes : {65537u, 0xFFFFFFFFu}) {
      EXPECT_EQ(session.call<Callback::kLoopbackTest>({.brdno = kNewer, .arg2 = bytes}, *sent, *received).status,
                std::uint32_t{VMKMGMT_SIM_DRIVER_OUT_OF_RANGE});
    }
    EXPECT_EQ(received->bytes[0], 0xA5);
  });
}

TEST(Loopback, through_the_port_needs_a_plug) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(configure(session, kNewer, kExternal), 0u);
    const Result open = run(session, kNewer, {1, 2, 3});
    EXPECT_EQ(open.header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_LOOP_OPEN});
    EXPECT_TRUE(open.received.empty());
    EXPECT_EQ(configure(session, kPlugged, kExternal), 0u);
    EXPECT_EQ(run(session, kPlugged, {1, 2, 3}).received, (std::vector<std::uint8_t>{1, 2, 3}));

    dfc_io_info io;
    session.call<Callback::kIoInfo>({.brdno = kNewer}, io);
    EXPECT_EQ(word(io, 24), 1u);
    EXPECT_EQ(word(io, 28), 1u);
    session.call<Callback::kIoInfo>({.brdno = kPlugged}, io);
    EXPECT_EQ(word(io, 24), 1u);
    EXPECT_EQ(word(io, 28), 0u);
  });
}

TEST(Loopback, has_one_mode_at_a_time) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(end(session, kNewer), kWrongMode);
    EXPECT_EQ(configure(session, kNewer, kInternal), 0u);
    EXPECT_EQ(configure(session, kNewer, kInternal), 0u);
    EXPECT_EQ(configure(session, kNewer, kExternal), kWrongMode);
    EXPECT_EQ(end(session, kNewer), 0u);
    EXPECT_EQ(configure(session, kNewer, kExternal), 0u);
    for (const std::uint32_t mode : {0u, 2u, 3u, 5u, 0xFFFFFFFFu}) {
      EXPECT_EQ(configure(session, kNewer, mode), std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
    }
    EXPECT_EQ(end(session, kOlder), std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_SUPPORTED});
    EXPECT_EQ(initialise_loop(session, kNewer), std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_SUPPORTED});
    for (const std::uint32_t status :
         {configure(session, kFailed, kInternal), run(session, kFailed, {1}).header.status, initialise_loop(session, kFailed)}) {
      EXPECT_EQ(status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
    }
  });
}

TEST(Loopback, takes_the_port_out_of_the_fabric) {
  in_process({}, [] {
    Session session;
    const auto generation = [&] { return session.call<Callback::kHbaRefreshInfo>({.brdno = kNewer}).arg4; };
    EXPECT_EQ(port_state(session, kNewer), 2u);
    configure(session, kNewer, kInternal);
    EXPECT_EQ(port_state(session, kNewer), 8u);
    EXPECT_EQ(generation(), 1u);
    dfc_node_table nodes;
    EXPECT_EQ(session.call<Callback::kNodeInfo>({.brdno = kNewer, .arg2 = sizeof(nodes)}, nodes).arg3, 0u);
    dfc_link_info link;
    session.call<Callback::kLinkInfo>({.brdno = kNewer}, link);
    EXPECT_EQ(word(link, 4), 4u);
    EXPECT_EQ(at<std::uint8_t>(link, 20), kInternal);
    end(session, kNewer);
    EXPECT_EQ(port_state(session, kNewer), 2u);
    EXPECT_EQ(generation(), 2u);
    EXPECT_EQ(events(session, kNewer), (std::vector<std::uint32_t>{3, 2})) << "down, up";

    session.call<Callback::kSetDiag>({.brdno = kNewer, .arg6 = 0x12});
    configure(session, kNewer, kInternal);
    EXPECT_EQ(port_state(session, kNewer), 8u);
    end(session, kNewer);
    EXPECT_EQ(port_state(session, kNewer), 3u);
    EXPECT_EQ(generation(), 3u);
    EXPECT_EQ(events(session, kNewer), std::vector<std::uint32_t>{3}) << "for going offline";
  });
}

TEST(Loopback, ends_with_a_reset_a_restart_and_a_dump) {
  in_process({}, [] {
    Session session;
    const std::vector<std::function<dfc_mgmt_hdr()>> enders{
        [&] { return session.call<Callback::kReset>({.brdno = kNewer, .arg6 = 1}); },
        [&] { return session.call<Callback::kSetDiag>({.brdno = kNewer, .arg6 = 0x14}); },
        [&] { return session.call<Callback::kInduceDump>({.brdno = kNewer}); }};
    for (const auto& ender : enders) {
      EXPECT_EQ(configure(session, kNewer, kInternal), 0u);
      EXPECT_EQ(ender().status, 0u);
      EXPECT_EQ(port_state(session, kNewer), 2u);
      EXPECT_EQ(events(session, kNewer), (std::vector<std::uint32_t>{3, 2}));
    }
  });
}

TEST(Loopback, survives_the_process_in_the_state_folder) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(configure(session, kNewer, kInternal), 0u);
  });
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(run(session, kNewer, {7}).received, std::vector<std::uint8_t>{7});
    EXPECT_EQ(end(session, kNewer), 0u);
  });
}

TEST(Loopback, has_the_bit_errors_of_the_scenario) {
  json scenario = small_scenario();
  for (const auto& [errors, bytes, expected] : {std::tuple{1u, 64u, 1}, std::tuple{5u, 4096u, 5}, std::tuple{100u, 2u, 16}}) {
    scenario["adapters"][0]["loopback"] = {{"bit_errors", errors}};
    under_scenario(scenario, [count = bytes, wrong_bits = expected] {
      Session session;
      configure(session, 2, kInternal);
      const auto sent = pattern(count, 1);
      const Result result = run(session, 2, sent);
      EXPECT_EQ(result.header.status, 0u);
      int wrong = 0;
      for (std::size_t i = 0; i < sent.size(); ++i) wrong += std::popcount(static_cast<std::uint8_t>(sent[i] ^ result.received[i]));
      EXPECT_EQ(wrong, wrong_bits);
      dfc_io_info io;
      session.call<Callback::kIoInfo>({.brdno = 2}, io);
      EXPECT_EQ(word(io, 28), 1u);
    });
  }
}

TEST(LoopInitialisation, makes_a_new_generation_and_an_event) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(initialise_loop(session, kOlder), 0u);
    EXPECT_EQ(session.call<Callback::kHbaRefreshInfo>({.brdno = kOlder}).arg4, 1u);
    EXPECT_EQ(events(session, kOlder), std::vector<std::uint32_t>{1});
    session.call<Callback::kSetDiag>({.brdno = kOlder, .arg6 = 0x12});
    EXPECT_EQ(initialise_loop(session, kOlder), kWrongMode);
  });
}

}  // namespace
