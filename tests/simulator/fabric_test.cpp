// CT requests, link services and management traffic.
#include "scsi_exchange.h"

namespace {

using vaskdfc::ElsFrame;
using vaskdfc::ServiceFrame;

constexpr std::uint32_t kNoSuchPort = VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;
constexpr std::uint32_t kDirectory = 0xFFFFFC;

struct Reply {
  dfc_mgmt_hdr header;
  Bytes bytes;
};

struct CtRequest {
  std::uint16_t code;
  Bytes payload;
  std::uint32_t destination = kDirectory;
  std::uint8_t service = 0xFC;
  std::uint16_t most_words = 0;
  std::uint32_t room = 4096;
  std::uint32_t board = 1;
};

Reply ask(Session& session, const CtRequest& request) {
  const auto sent = std::make_unique<ServiceFrame>();
  const auto reply = std::make_unique<ServiceFrame>();
  const Bytes preamble{1,
                       0,
                       0,
                       0,
                       request.service,
                       2,
                       0,
                       0,
                       static_cast<std::uint8_t>(request.code >> 8),
                       static_cast<std::uint8_t>(request.code),
                       static_cast<std::uint8_t>(request.most_words >> 8),
                       static_cast<std::uint8_t>(request.most_words)};
  std::ranges::copy(preamble, sent->bytes);
  std::ranges::copy(request.payload, sent->bytes + 16);
  const dfc_mgmt_hdr header = session.call<Callback::kSendCt>({.brdno = request.board,
                                                               .arg2 = static_cast<std::uint32_t>(16 + request.payload.size()),
                                                               .arg3 = request.room,
                                                               .arg4 = request.destination},
                                                              *sent, *reply);
  if (header.status != 0) return {header, {}};
  return {header, Bytes(reply->bytes, reply->bytes + header.arg3)};
}

// The payload of an accept.
Bytes accepted(Session& session, const CtRequest& request) {
  const Bytes reply = ask(session, request).bytes;
  EXPECT_GE(reply.size(), 16u);
  EXPECT_EQ(reply.at(8) << 8 | reply.at(9), 0x8002);
  return Bytes(reply.begin() + 16, reply.end());
}

// Reason and explanation of a reject.
Bytes rejected(Session& session, const CtRequest& request) {
  const Bytes reply = ask(session, request).bytes;
  EXPECT_EQ(reply.size(), 16u);
  EXPECT_EQ(reply.at(8) << 8 | reply.at(9), 0x8001);
  return Bytes(reply.begin() + 13, reply.begin() + 15);
}

const Bytes kArray{0, 0x01, 0x02, 0x00};
const Bytes kArrayName{0x50, 0x5a, 0x41, 0x00, 0x0c, 0x00, 0x10, 0x01};

TEST(Ct, names_of_a_port) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(accepted(session, {.code = 0x0112, .payload = kArray}), kArrayName);
    EXPECT_EQ(accepted(session, {.code = 0x0113, .payload = kArray}), (Bytes{0x50, 0x5a, 0x41, 0x00, 0x0c, 0x00, 0x10, 0x00}));
    EXPECT_EQ(accepted(session, {.code = 0x0121, .payload = kArrayName}), kArray);
    const Bytes types = accepted(session, {.code = 0x0117, .payload = kArray});
    ASSERT_EQ(types.size(), 32u);
    EXPECT_EQ(types[2], 1);
    const Bytes symbolic = accepted(session, {.code = 0x0118, .payload = kArray});
    ASSERT_EQ(symbolic.size(), 256u);
    EXPECT_EQ(symbolic[0], 27);
    EXPECT_EQ(std::string(symbolic.begin() + 1, symbolic.begin() + 1 + symbolic[0]), "array-1 controller A port 1");
  });
}

TEST(Ct, a_walk_meets_every_port_of_the_fabric_once) {
  in_process({}, [] {
    Session session;
    std::vector<std::uint32_t> ids;
    Bytes id{0, 0, 0, 0};
    for (int step = 0; step < 6; ++step) {
      const Bytes next = accepted(session, {.code = 0x0100, .payload = id});
      ASSERT_EQ(next.size(), 620u);
      EXPECT_EQ(next[0], 1) << "an N_Port";
      id = {0, next[1], next[2], next[3]};
      ids.push_back(static_cast<std::uint32_t>(next[1] << 16 | next[2] << 8 | next[3]));
    }
    EXPECT_EQ(ids, (std::vector<std::uint32_t>{0x010200, 0x010300, 0x010400, 0x010a00, 0x010c00, 0x010200}))
        << "the failed adapter has not logged in";
    const Bytes first = accepted(session, {.code = 0x0100, .payload = {0, 0, 0, 0}});
    EXPECT_EQ(Bytes(first.begin() + 4, first.begin() + 12), kArrayName);
    EXPECT_EQ(first[12], 27) << "length of the symbolic name";
    EXPECT_EQ(first[268], 0x50) << "node name";
    EXPECT_EQ(first[559], 8) << "class 3";
    EXPECT_EQ(first[562], 1) << "FCP";
  });
}

TEST(Ct, lists_of_a_type_end_with_a_mark) {
  in_process({}, [] {
    Session session;
    const Bytes ids = accepted(session, {.code = 0x0171, .payload = {0, 0, 0, 0x08}});
    ASSERT_EQ(ids.size(), 5 * 4u);
    EXPECT_EQ(Bytes(ids.begin(), ids.begin() + 4), kArray);
    EXPECT_EQ(ids[12], 0);
    EXPECT_EQ(Bytes(ids.end() - 4, ids.end()), (Bytes{0x80, 0x01, 0x0c, 0x00}));
    EXPECT_EQ(accepted(session, {.code = 0x0171, .payload = {0, 1, 3, 0x08}}), (Bytes{0x80, 0x01, 0x03, 0x00}));

    const Bytes names = accepted(session, {.code = 0x0172, .payload = {0, 1, 2, 0x08}});
    ASSERT_EQ(names.size(), 16u);
    EXPECT_EQ(names[0], 0x80);
    EXPECT_EQ(Bytes(names.begin() + 8, names.end()), kArrayName);

    const Bytes cut = ask(session, {.code = 0x0171, .payload = {0, 0, 0, 8}, .most_words = 2}).bytes;
    ASSERT_EQ(cut.size(), 16 + 8u);
    EXPECT_EQ(cut[11], 3) << "words that were left out";
  });
}

TEST(Ct, rejects_have_reasons) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(rejected(session, {.code = 0x0112, .payload = {0, 9, 9, 9}}), (Bytes{9, 1}));
    EXPECT_EQ(rejected(session, {.code = 0x0121, .payload = Bytes(8)}), (Bytes{9, 2}));
    EXPECT_EQ(rejected(session, {.code = 0x0171, .payload = {0, 0, 0, 0x28}}), (Bytes{9, 7}));
    EXPECT_EQ(rejected(session, {.code = 0x0212, .payload = Bytes(12)}), (Bytes{0x0B, 0})) << "registrations";
    EXPECT_EQ(rejected(session, {.code = 0x0112, .payload = {0, 1}}), (Bytes{4, 0}));
    EXPECT_EQ(rejected(session, {.code = 0x0112, .payload = kArray, .service = 0xFA}), (Bytes{0x0D, 0}));
    EXPECT_EQ(rejected(session, {.code = 0x0112, .payload = kArray, .destination = 0xFFFFFA}), (Bytes{0x0D, 0}));
  });
}

TEST(Ct, needs_a_link_and_room_for_the_reply) {
  in_process({}, [] {
    Session session;
    const Reply tight = ask(session, {.code = 0x0112, .payload = kArray, .room = 23});
    EXPECT_EQ(tight.header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE});
    EXPECT_EQ(tight.header.arg3, 24u);
    EXPECT_EQ(ask(session, {.code = 0x0112, .payload = kArray, .room = 24}).header.status, 0u);
    EXPECT_EQ(ask(session, {.code = 0x0112, .payload = kArray, .board = 4}).header.status, kNoSuchPort);
    EXPECT_EQ(ask(session, {.code = 0x0112, .payload = kArray, .board = 12}).header.status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
    const auto frame = std::make_unique<ServiceFrame>();
    const auto reply = std::make_unique<ServiceFrame>();
    EXPECT_EQ(session.call<Callback::kSendCt>({.brdno = 1, .arg2 = 15}, *frame, *reply).status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
  });
}

dfc_els_descriptor to_name(const Bytes& name) {
  dfc_els_descriptor descriptor{};
  std::ranges::copy(name, descriptor.bytes);
  return descriptor;
}

dfc_els_descriptor to_id(std::uint32_t id) {
  dfc_els_descriptor descriptor{};
  std::memcpy(descriptor.bytes + 8, &id, sizeof(id));
  return descriptor;
}

Reply send_els(Session& session, const dfc_els_descriptor& descriptor, const Bytes& request, std::uint32_t room = 1024) {
  ElsFrame sent{};
  ElsFrame reply{};
  std::ranges::copy(request, sent.bytes);
  const dfc_mgmt_hdr header = session.call<Callback::kSendEls>(
      {.brdno = 1, .arg2 = static_cast<std::uint32_t>(request.size()), .arg3 = room}, descriptor, sent, reply);
  if (header.status != 0) return {header, {}};
  return {header, Bytes(reply.bytes, reply.bytes + header.arg3)};
}

TEST(Els, an_echo_comes_back) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(send_els(session, to_id(0x010200), {0x10, 0, 0, 0, 1, 2, 3, 4, 5}).bytes, (Bytes{2, 0, 0, 0, 1, 2, 3, 4, 5}));
    const Reply tight = send_els(session, to_name(kArrayName), {0x10, 0, 0, 0, 1, 2, 3, 4}, 7);
    EXPECT_EQ(tight.header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE});
    EXPECT_EQ(tight.header.arg3, 8u);
  });
}

TEST(Els, nodes_identify_themselves_and_adapters_tell_what_was_set) {
  in_process({}, [] {
    Session session;
    const Bytes common = send_els(session, to_id(0x010200), {0x78, 0, 0, 0, 0, 0, 0, 0}).bytes;
    ASSERT_EQ(common.size(), 24u);
    EXPECT_EQ(Bytes(common.begin(), common.begin() + 8), (Bytes{2, 0, 0, 0, 0, 16, 0, 0}));
    EXPECT_EQ(Bytes(common.begin() + 8, common.begin() + 16), kArrayName);

    HbaMgmtInfo info{};
    info.unittype = 0x0B;
    info.PortId = 0x01020304;
    info.NumberOfAttachedNodes = 2;
    info.IPVersion = 1;
    info.UDPPort = 0x1234;
    info.IPAddress[15] = 9;
    info.TopologyDiscoveryFlags = 3;
    session.call<Callback::kHbaSetMgmtInfo>({.brdno = 7}, info);
    const Bytes topology = send_els(session, to_id(0x010c00), {0x78, 0, 0, 0, 0xDF, 0, 0, 0}).bytes;
    ASSERT_EQ(topology.size(), 76u);
    EXPECT_EQ(topology[4], 0xDF);
    EXPECT_EQ(topology[7], 52);
    EXPECT_EQ(Bytes(topology.begin() + 40, topology.begin() + 56),
              (Bytes{0, 0, 0, 0x0B, 1, 2, 3, 4, 0, 0, 0, 2, 0, 1, 0x12, 0x34}));
    EXPECT_EQ(Bytes(topology.begin() + 71, topology.end()), (Bytes{9, 0, 0, 0, 3}));
  });
}

TEST(Els, link_errors_are_the_counters_of_the_port) {
  json scenario = small_scenario();
  scenario["clock"] = {{"step_ms", 0}};
  scenario["adapters"][0]["board"] = 1;
  scenario["adapters"][0]["counters"] = json::parse(R"({"link_failures": {"start": 1}, "losses_of_sync": {"start": 2},
    "losses_of_signal": {"start": 3}, "protocol_errors": {"start": 4},
    "invalid_words": {"start": 5}, "invalid_crcs": {"start": 6}})");
  under_scenario(scenario, [] {
    Session session;
    EXPECT_EQ(send_els(session, to_id(0x010a00), {0x0F, 0, 0, 0, 0, 0x01, 0x0a, 0x00}).bytes,
              (Bytes{2, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 5, 0, 0, 0, 6}));
    EXPECT_EQ(send_els(session, to_id(0x010200), {0x0F, 0, 0, 0, 0, 0x01, 0x02, 0x00}).bytes.size(), 28u);
    EXPECT_EQ(send_els(session, to_id(0x010200), {0x0F, 0, 0, 0, 0, 0x01, 0x0a, 0x00}).bytes, (Bytes{1, 0, 0, 0, 0, 9, 0x1F, 0}));
  });
}

TEST(Els, what_is_not_served_is_rejected_and_who_is_not_there_is_not_asked) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(send_els(session, to_id(0x010200), {0x50, 0, 0, 0}).bytes, (Bytes{1, 0, 0, 0, 0, 0x0B, 0x2C, 0}));
    EXPECT_EQ(send_els(session, to_id(0x010200), {0x78, 0, 0, 0}).bytes, (Bytes{1, 0, 0, 0, 0, 3, 0x2D, 0}));
    EXPECT_EQ(send_els(session, to_id(0x010200), {0x78, 0, 0, 0, 7, 0, 0, 0}).bytes, (Bytes{1, 0, 0, 0, 0, 9, 0x2C, 0}));
    EXPECT_EQ(send_els(session, to_id(0x010999), {0x10, 0, 0, 0}).header.status, kNoSuchPort);
    EXPECT_EQ(send_els(session, to_name(Bytes(8, 1)), {0x10, 0, 0, 0}).header.status, kNoSuchPort);
    EXPECT_EQ(send_els(session, to_id(0x010200), {0x10, 0, 0}).header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
  });
}

TEST(ManagementTraffic, commands_are_echoed_and_responses_taken) {
  in_process({}, [] {
    Session session;
    const auto request = std::make_unique<ServiceFrame>();
    const auto reply = std::make_unique<ServiceFrame>();
    const Bytes data = pattern(sizeof(request->bytes), 5);
    std::ranges::copy(data, request->bytes);
    const dfc_mgmt_hdr whole{.brdno = 1, .arg2 = sizeof(request->bytes), .arg3 = sizeof(reply->bytes)};
    const dfc_mgmt_command echo{{1}};
    EXPECT_EQ(session.call<Callback::kHbaSendMgmtCmd>(whole, echo, *request, *reply).arg3, data.size());
    EXPECT_TRUE(std::ranges::equal(data, reply->bytes));
    const dfc_mgmt_command unknown{{2}};
    EXPECT_EQ(session.call<Callback::kHbaSendMgmtCmd>(whole, unknown, *request, *reply).status,
              std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND});
    EXPECT_EQ(session.call<Callback::kHbaSendMgmtRsp>(whole, *request).status, 0u);
    EXPECT_EQ(session.call<Callback::kHbaSendMgmtRsp>({.brdno = 4}, *request).status, kNoSuchPort);
  });
}

}  // namespace
