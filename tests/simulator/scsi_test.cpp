// SCSI commands over both transports.
#include <filesystem>

#include "scsi_exchange.h"

namespace {

constexpr std::uint32_t kNoSuchPort = VMKMGMT_SIM_DRIVER_NO_SUCH_PORT;

const Bytes kFirstUnit{0, 0};
const Bytes kReadOnlyUnit{0, 4};
const Bytes kNoUnit{0, 99};

Bytes read_cdb(std::uint32_t block, std::uint16_t blocks, std::uint8_t operation = 0x28) {
  return {operation,
          0,
          static_cast<std::uint8_t>(block >> 24),
          static_cast<std::uint8_t>(block >> 16),
          static_cast<std::uint8_t>(block >> 8),
          static_cast<std::uint8_t>(block),
          0,
          static_cast<std::uint8_t>(blocks >> 8),
          static_cast<std::uint8_t>(blocks)};
}

ScsiCommand reading(std::uint32_t block, std::uint16_t blocks, const Bytes& lun = kFirstUnit) {
  return {.lun = lun, .cdb = read_cdb(block, blocks), .room = blocks * 512u, .data = {}};
}

ScsiCommand writing(std::uint32_t block, const Bytes& data, const Bytes& lun = kFirstUnit) {
  return {.lun = lun, .cdb = read_cdb(block, static_cast<std::uint16_t>(data.size() / 512), 0x2A), .data = data};
}

// Key, code and qualifier of a fixed-format sense.
std::string verdict(const ScsiResult& result) {
  if (result.sense.empty()) return "good";
  EXPECT_EQ(result.sense.size(), 18u);
  EXPECT_EQ(result.sense[0] & 0x7F, 0x70);
  EXPECT_EQ(result.sense[7], 10);
  EXPECT_TRUE(result.data.empty());
  char text[16];
  std::snprintf(text, sizeof(text), "%x/%02x/%02x", unsigned{result.sense[2]}, unsigned{result.sense[12]},
                unsigned{result.sense[13]});
  return text;
}

TEST(Scsi, what_is_written_is_read_through_every_path_and_nothing_else_changes) {
  in_process({}, [] {
    Session session;
    const Bytes data = pattern(8 * 512, 3);
    const ScsiResult written = send(session, writing(5, data));
    EXPECT_EQ(verdict(written), "good");
    EXPECT_EQ(written.data.size(), 0u);
    EXPECT_EQ(send(session, reading(5, 8)).data, data);
    EXPECT_EQ(send(session, reading(4, 1)).data, Bytes(512));
    EXPECT_EQ(send(session, reading(13, 1)).data, Bytes(512));
    EXPECT_EQ(send(session, reading(5, 8, {0, 1})).data, Bytes(8 * 512)) << "another disk";

    ScsiCommand other_path = reading(5, 8);
    other_path.board = 3;
    other_path.target = wwn({0x50, 0x5a, 0x41, 0, 0x0c, 0, 0x10, 0x04});
    EXPECT_EQ(send(session, other_path).data, data);
    other_path.board = 7;
    EXPECT_EQ(send(session, other_path).status, kNoSuchPort) << "a port of the other fabric";
  });
}

TEST(Scsi, the_ends_of_a_disk_are_where_its_capacity_says) {
  in_process({}, [] {
    Session session;
    const ScsiResult capacity = send(session, {.lun = kFirstUnit, .cdb = {0x25}, .room = 8, .data = {}});
    EXPECT_EQ(capacity.data, (Bytes{0, 0, 0x1F, 0xFF, 0, 0, 2, 0}));
    EXPECT_EQ(verdict(send(session, reading(0x1FFF, 1))), "good");
    EXPECT_EQ(verdict(send(session, reading(0x2000, 0))), "good");
    EXPECT_EQ(verdict(send(session, reading(0x2001, 0))), "5/21/00");
    EXPECT_EQ(verdict(send(session, writing(0x1FFF, Bytes(1024)))), "5/21/00");
    const ScsiResult beyond = send(session, reading(0xFFFFFFFF, 2));
    EXPECT_EQ(verdict(beyond), "5/21/00");
    EXPECT_EQ(Bytes(beyond.sense.begin(), beyond.sense.begin() + 7), (Bytes{0xF0, 0, 5, 0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(send(session, reading(0x1FFF, 2)).sense[5], 0x20) << "the first block that is not there";

    EXPECT_EQ(send(session, reading(0, 512)).data.size(), 262144u);
    EXPECT_EQ(verdict(send(session, reading(0, 513))), "5/24/00");
  });
}

TEST(Scsi, what_a_unit_does_not_do_ends_in_sense) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(verdict(send(session, {.lun = kNoUnit, .cdb = {0x00}, .data = {}})), "5/25/00");
    EXPECT_EQ(verdict(send(session, reading(0, 1, kNoUnit))), "5/25/00");
    EXPECT_EQ(verdict(send(session, reading(0, 1, {0, 0, 0, 1}))), "5/25/00") << "a LUN of two levels";
    EXPECT_EQ(verdict(send(session, reading(0, 1, {0x40, 4}))), "good") << "the flat form of a small LUN";
    EXPECT_EQ(verdict(send(session, {.lun = kFirstUnit, .cdb = {0x5A}, .data = {}})), "5/20/00");
    EXPECT_EQ(verdict(send(session, writing(0, Bytes(512), kReadOnlyUnit))), "7/27/00");
    EXPECT_EQ(verdict(send(session, reading(0, 1, kReadOnlyUnit))), "good");
    EXPECT_EQ(verdict(send(session, {.lun = kFirstUnit, .cdb = {0x12, 0, 0x80, 0, 96}, .room = 96, .data = {}})), "5/24/00");
    EXPECT_EQ(verdict(send(session, {.lun = kFirstUnit, .cdb = {0xA0, 0, 0, 0, 0, 0, 0, 0, 0, 15}, .room = 15, .data = {}})),
              "5/24/00");
    ScsiCommand short_of_data = writing(0, Bytes(1024, 7));
    short_of_data.data.resize(1000);
    EXPECT_EQ(verdict(send(session, short_of_data)), "b/4b/00");
    EXPECT_EQ(send(session, reading(0, 2)).data, Bytes(1024)) << "nothing of it was written";

    const ScsiResult sense = send(session, {.lun = kNoUnit, .cdb = {0x03, 0, 0, 0, 18}, .room = 18, .data = {}});
    EXPECT_EQ(sense.data.at(12), 0x25) << "asked for, it comes as data";
    EXPECT_TRUE(sense.sense.empty());
  });
}

TEST(Scsi, no_more_comes_back_than_was_announced_or_allocated) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(send(session, {.lun = kFirstUnit, .cdb = {0x12, 0, 0, 0, 36}, .room = 255, .data = {}}).data.size(), 36u);
    EXPECT_EQ(send(session, {.lun = kFirstUnit, .cdb = {0x12, 0, 0, 0, 255}, .room = 255, .data = {}}).data.size(), 96u);
    EXPECT_EQ(send(session, {.lun = kFirstUnit, .cdb = {0x12, 0, 0, 0, 255}, .room = 5, .data = {}}).data.size(), 5u);
    ScsiCommand announced_less = reading(0, 2);
    announced_less.room = 700;
    EXPECT_EQ(send(session, announced_less).data.size(), 700u);
  });
}

TEST(Scsi, commands_to_what_is_no_target_fail_in_the_driver) {
  in_process({}, [] {
    Session session;
    ScsiCommand command = reading(0, 1);
    command.target = wwn({1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(send(session, command).status, kNoSuchPort);
    command = reading(0, 1);
    command.board = 12;
    EXPECT_EQ(send(session, command).status, std::uint32_t{VMKMGMT_SIM_DRIVER_NOT_READY});
    command.board = 1;
    session.call<Callback::kSetDiag>({.brdno = 1, .arg6 = 0x12});
    EXPECT_EQ(send(session, command).status, kNoSuchPort) << "offline";

    command = reading(0, 1);
    command.board = 7;
    command.target = wwn({0x50, 0x5a, 0x41, 0, 0x0c, 0, 0x20, 0x01});
    EXPECT_EQ(verdict(send(session, command)), "5/25/00") << "a target without units";
  });
}

TEST(Scsi, a_disk_in_a_state_folder_outlives_the_process_and_takes_no_room_for_what_is_not_written) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  const Bytes data = pattern(1024, 9);
  const std::string file = folder.path("disk-505a41000c001000-1.img");
  in_process(environment, [&] {
    Session session;
    EXPECT_EQ(send(session, reading(131070, 2, {0, 1})).data, Bytes(1024));
    EXPECT_FALSE(std::filesystem::exists(file)) << "reading writes nothing";
    EXPECT_EQ(verdict(send(session, writing(131070, data, {0, 1}))), "good");
  });
  EXPECT_EQ(std::filesystem::file_size(file), 131072u * 512);
  in_process(environment, [&] {
    Session session;
    EXPECT_EQ(send(session, reading(131070, 2, {0, 1})).data, data);
  });
  std::filesystem::resize_file(file, 512);
  const std::string message = in_process(environment, [] {
    vmk_MgmtUserHandle handle = nullptr;
    EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_STATE});
  });
  EXPECT_EQ(message, "vmkmgmt simulator: " + file +
                         ": damaged: the whole file: expected 67108864 bytes; remove the file to start with fresh state\n");
}

struct FcpResult {
  dfc_mgmt_hdr header;
  Bytes response;
};

FcpResult send_fcp(Session& session, const ScsiCommand& command, std::uint32_t room) {
  vaskdfc::FcpPassThruRequest request{};
  request.target = command.target;
  request.command = block_of(command);
  request.response_bytes = room;
  const auto data = std::make_unique<vaskdfc::TransferData>();
  std::ranges::copy(command.data, data->bytes);
  const auto length = command.data.empty() ? command.room : static_cast<std::uint32_t>(command.data.size());
  const dfc_mgmt_hdr header = session.call<Callback::kHbaSendFcp>({.brdno = command.board, .arg2 = length}, request, *data);
  Bytes record(sizeof(request));
  std::memcpy(record.data(), &request, sizeof(request));
  return {header, Bytes(record.begin() + 40, record.begin() + 40 + static_cast<std::ptrdiff_t>(request.response_bytes))};
}

TEST(Scsi, the_fcp_transport_answers_with_a_response_information_unit) {
  in_process({}, [] {
    Session session;
    const FcpResult good = send_fcp(session, reading(0, 2), 128);
    EXPECT_EQ(good.header.arg3, 1024u);
    ASSERT_EQ(good.response.size(), 24u);
    EXPECT_EQ(Bytes(good.response.begin(), good.response.begin() + 16), Bytes(16));

    const FcpResult under = send_fcp(session, {.lun = kFirstUnit, .cdb = {0x25}, .room = 20, .data = {}}, 128);
    EXPECT_EQ(under.response[10], 0x08);
    EXPECT_EQ(under.response[15], 12);

    ScsiCommand announced_less = reading(0, 2);
    announced_less.room = 1000;
    const FcpResult over = send_fcp(session, announced_less, 128);
    EXPECT_EQ(over.header.arg3, 1000u);
    EXPECT_EQ(over.response[10], 0x04);
    EXPECT_EQ(over.response[15], 24);

    const FcpResult written = send_fcp(session, writing(0, Bytes(512, 1)), 128);
    EXPECT_EQ(written.header.arg3, 0u);
    EXPECT_EQ(written.response[10], 0);
  });
}

TEST(Scsi, the_fcp_transport_carries_sense_as_far_as_there_is_room) {
  in_process({}, [] {
    Session session;
    const ScsiCommand command = reading(0, 1, kNoUnit);
    const FcpResult whole = send_fcp(session, command, 128);
    ASSERT_EQ(whole.response.size(), 42u);
    EXPECT_EQ(whole.response[10], 0x0A);
    EXPECT_EQ(whole.response[11], 2);
    EXPECT_EQ(whole.response[24], 0x70);
    EXPECT_EQ(whole.response[26], 5);
    EXPECT_EQ(whole.response[36], 0x25);
    EXPECT_EQ(send_fcp(session, command, 30).response.size(), 30u);
    EXPECT_EQ(send_fcp(session, command, 24).header.status, 0u);
    EXPECT_EQ(send_fcp(session, command, 23).header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE});
  });
}

}  // namespace
