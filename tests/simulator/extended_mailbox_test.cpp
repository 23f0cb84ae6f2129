// Extended configuration mailboxes, which carry requests about objects.
#include <algorithm>

#include "sim_process.h"

namespace {

using vaskdfc::MailboxData;

constexpr std::uint32_t kBoard = 1;
constexpr std::uint32_t kFromAdapter = 1;
constexpr std::uint32_t kToAdapter = 2;

struct Exchange {
  MailboxData buffer{};
  dfc_mgmt_hdr header{.brdno = kBoard};

  void set(std::size_t at, std::uint32_t value) { std::memcpy(buffer.bytes + at, &value, sizeof(value)); }
  std::uint32_t word(std::size_t at) const {
    std::uint32_t value;
    std::memcpy(&value, buffer.bytes + at, sizeof(value));
    return value;
  }
  std::uint32_t status() const { return word(0) >> 16; }

  // Returns the adapter's status of a mailbox that the driver must take.
  std::uint32_t issue(Session& session) {
    header = session.call<Callback::kMboxSliCfgExt>(header, buffer);
    EXPECT_EQ(header.status, 0u);
    return status();
  }
};

Exchange embedded(std::uint32_t opcode, const std::string& name, std::uint32_t offset, std::uint32_t length) {
  Exchange request;
  request.set(0, 0xBEEF9B00);
  request.set(4, 1);
  request.buffer.bytes[24] = static_cast<std::uint8_t>(opcode);
  request.set(28, offset);
  request.set(32, length);
  std::ranges::copy(name, request.buffer.bytes + 36);
  request.header.arg6 = opcode == 0xAC ? kFromAdapter : kToAdapter;
  request.header.arg2 = request.header.arg3 = 256;
  return request;
}

Exchange write_request(const std::string& name, std::uint32_t offset, const std::vector<std::uint8_t>& content) {
  const auto size = static_cast<std::uint32_t>(content.size());
  Exchange request = embedded(0xAB, name, offset, size);
  std::ranges::copy(content, request.buffer.bytes + 256);
  request.header.arg2 = request.header.arg3 = 256 + size;
  return request;
}

// What an object holds from an offset on, at most so many bytes.
std::vector<std::uint8_t> read(Session& session, const std::string& name, std::uint32_t offset, std::uint32_t length) {
  Exchange request = embedded(0xAC, name, offset, length);
  request.header.arg3 = sizeof(MailboxData);
  EXPECT_EQ(request.issue(session), 0u);
  EXPECT_EQ(request.header.arg3, 256 + request.word(32));
  return {request.buffer.bytes + 256, request.buffer.bytes + request.header.arg3};
}

std::uint32_t read_status(Session& session, const std::string& name) { return embedded(0xAC, name, 0, 1).issue(session); }

TEST(ExtendedMailbox, an_object_is_written_read_and_deleted) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(read_status(session, "settings"), std::uint32_t{VMKMGMT_SIM_MAILBOX_NO_SUCH_OBJECT});
    Exchange write = write_request("settings", 0, pattern(1000, 1));
    EXPECT_EQ(write.issue(session), 0u);
    EXPECT_EQ(write.header.arg3, 256u);
    EXPECT_EQ(write.word(0) & 0xFFFF, 0x9B00u);
    EXPECT_EQ(read(session, "settings", 0, 4096), pattern(1000, 1));
    EXPECT_EQ(embedded(0xAD, "settings", 0, 0).issue(session), 0u);
    EXPECT_EQ(read_status(session, "settings"), std::uint32_t{VMKMGMT_SIM_MAILBOX_NO_SUCH_OBJECT});
    EXPECT_EQ(embedded(0xAD, "settings", 0, 0).issue(session), std::uint32_t{VMKMGMT_SIM_MAILBOX_NO_SUCH_OBJECT});
  });
}

TEST(ExtendedMailbox, an_object_is_written_and_read_in_pieces) {
  in_process({}, [] {
    Session session;
    const std::vector<std::uint8_t> image = pattern(3840, 2);
    EXPECT_EQ(write_request("image", 100, image).issue(session), 0u);
    EXPECT_EQ(write_request("image", 98, {7, 8}).issue(session), 0u);
    EXPECT_EQ(read(session, "image", 96, 4), (std::vector<std::uint8_t>{0, 0, 7, 8}));
    EXPECT_EQ(read(session, "image", 100, 3840), image) << "a full buffer";
    EXPECT_EQ(read(session, "image", 3939, 10), std::vector(1, image.back()));
    EXPECT_EQ(read(session, "image", 3940, 10), std::vector<std::uint8_t>());
    EXPECT_EQ(read(session, "image", 0xFFFFFFFF, 0xFFFFFFFF), std::vector<std::uint8_t>());
  });
}

TEST(ExtendedMailbox, no_more_comes_back_than_the_caller_takes) {
  in_process({}, [] {
    Session session;
    ASSERT_EQ(write_request("image", 0, pattern(1000, 2)).issue(session), 0u);
    for (const auto& [room, returned] :
         {std::pair{0u, 0u}, std::pair{64u, 64u}, std::pair{256u, 256u}, std::pair{356u, 356u}, std::pair{0xFFFFFFFFu, 1256u}}) {
      Exchange request = embedded(0xAC, "image", 0, 4096);
      request.header.arg3 = room;
      EXPECT_EQ(request.issue(session), 0u);
      EXPECT_EQ(request.header.arg3, returned) << room;
    }
  });
}

TEST(ExtendedMailbox, objects_belong_to_their_adapter_and_outlive_handles) {
  in_process({}, [] {
    {
      Session session;
      ASSERT_EQ(write_request("kept", 0, {1, 2}).issue(session), 0u);
    }
    Session session;
    EXPECT_EQ(read(session, "kept", 0, 9), (std::vector<std::uint8_t>{1, 2}));
    Exchange other = embedded(0xAC, "kept", 0, 9);
    other.header.brdno = 3;
    EXPECT_EQ(other.issue(session), std::uint32_t{VMKMGMT_SIM_MAILBOX_NO_SUCH_OBJECT});
  });
}

TEST(ExtendedMailbox, a_name_may_fill_its_field) {
  in_process({}, [] {
    Session session;
    const std::string name(32, 'n');
    EXPECT_EQ(write_request(name, 0, {1}).issue(session), 0u);
    EXPECT_EQ(read(session, name, 0, 1), std::vector<std::uint8_t>{1});
    EXPECT_EQ(read_status(session, name.substr(1)), std::uint32_t{VMKMGMT_SIM_MAILBOX_NO_SUCH_OBJECT});
  });
}

TEST(ExtendedMailbox, there_is_room_for_so_many_objects_of_such_a_size) {
  in_process({}, [] {
    Session session;
    for (int object = 0; object < 16; ++object) EXPECT_EQ(write_request(std::to_string(object), 0, {1}).issue(session), 0u);
    EXPECT_EQ(write_request("16", 0, {1}).issue(session), std::uint32_t{VMKMGMT_SIM_MAILBOX_NO_ROOM});
    EXPECT_EQ(write_request("15", 65534, {1, 2}).issue(session), 0u);
    EXPECT_EQ(write_request("15", 65535, {3, 4}).issue(session), std::uint32_t{VMKMGMT_SIM_MAILBOX_NO_ROOM});
    EXPECT_EQ(write_request("15", 0xFFFFFFFF, {5}).issue(session), std::uint32_t{VMKMGMT_SIM_MAILBOX_NO_ROOM});
    EXPECT_EQ(read(session, "15", 65534, 9), (std::vector<std::uint8_t>{1, 2}));
  });
}

TEST(ExtendedMailbox, a_write_without_its_data_is_refused) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t sent : {64u, 256u, 265u}) {
      Exchange request = write_request("torn", 0, pattern(10, 1));
      request.header.arg2 = sent;
      EXPECT_EQ(request.issue(session), std::uint32_t{VMKMGMT_SIM_MAILBOX_BAD_REQUEST});
    }
    Exchange huge = write_request("torn", 0, pattern(3840, 1));
    huge.set(32, 3841);
    EXPECT_EQ(huge.issue(session), std::uint32_t{VMKMGMT_SIM_MAILBOX_BAD_REQUEST});
    EXPECT_EQ(read_status(session, "torn"), std::uint32_t{VMKMGMT_SIM_MAILBOX_NO_SUCH_OBJECT});
  });
}

Exchange not_embedded(std::uint32_t opcode, std::uint32_t offset, std::uint32_t length) {
  Exchange request;
  request.set(0, 0x9B00);
  request.buffer.bytes[257] = static_cast<std::uint8_t>(opcode);
  request.set(260, offset);
  request.set(264, length);
  request.header.arg6 = opcode == 9 ? kFromAdapter : kToAdapter;
  request.header.arg2 = request.header.arg3 = sizeof(MailboxData);
  return request;
}

TEST(ExtendedMailbox, requests_that_are_not_embedded_read_and_write_the_object_without_a_name) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(not_embedded(9, 0, 1).issue(session), std::uint32_t{VMKMGMT_SIM_MAILBOX_NO_SUCH_OBJECT});
    const std::vector<std::uint8_t> content = pattern(3828, 4);
    Exchange write = not_embedded(8, 0, 3828);
    std::ranges::copy(content, write.buffer.bytes + 268);
    EXPECT_EQ(write.issue(session), 0u);

    Exchange request = not_embedded(9, 28, 4096);
    EXPECT_EQ(request.issue(session), 0u);
    EXPECT_EQ(request.word(264), 3800u);
    ASSERT_EQ(request.header.arg3, 268u + 3800u);
    EXPECT_TRUE(std::equal(content.begin() + 28, content.end(), request.buffer.bytes + 268));
    EXPECT_EQ(read(session, "", 0, 4096), content);
  });
}

TEST(ExtendedMailbox, unknown_requests_complete_with_a_status) {
  in_process({}, [] {
    Session session;
    for (const std::uint32_t opcode : {0x00u, 0x08u, 0x09u, 0xAAu, 0xFFu}) {
      for (const std::uint32_t transfer : {kFromAdapter, kToAdapter}) {
        Exchange request = embedded(opcode, "any", 0, 0);
        request.header.arg6 = transfer;
        EXPECT_EQ(request.issue(session), std::uint32_t{VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND});
      }
    }
    for (const std::uint32_t opcode : {0x00u, 0x07u, 0xABu, 0xACu}) {
      EXPECT_EQ(not_embedded(opcode, 0, 0).issue(session), std::uint32_t{VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND});
    }
  });
}

TEST(ExtendedMailbox, what_is_no_such_mailbox_is_refused_by_the_driver) {
  in_process({}, [] {
    Session session;
    const auto refuse = [&](Exchange request, const char* what) {
      const dfc_mgmt_hdr header = session.call<Callback::kMboxSliCfgExt>(request.header, request.buffer);
      EXPECT_EQ(header.status, std::uint32_t{VMKMGMT_SIM_DRIVER_BAD_COMMAND}) << what;
    };
    for (const std::uint32_t transfer : {0u, 3u, 0xFFFFFFFFu}) {
      Exchange request = embedded(0xAC, "any", 0, 0);
      request.header.arg6 = transfer;
      refuse(request, "unknown transfer code");
    }
    Exchange backwards = embedded(0xAC, "any", 0, 0);
    backwards.header.arg6 = kToAdapter;
    refuse(backwards, "the other transfer code");
    backwards = not_embedded(8, 0, 0);
    backwards.header.arg6 = kFromAdapter;
    refuse(backwards, "the other transfer code");
    Exchange plain = embedded(0xAC, "any", 0, 0);
    plain.buffer.bytes[1] = 0x01;
    refuse(plain, "another command");
    Exchange huge = embedded(0xAC, "any", 0, 0);
    huge.header.arg2 = 4097;
    refuse(huge, "more than the buffer");
    Exchange nothing = embedded(0xAC, "any", 0, 0);
    nothing.header.arg2 = 0;
    refuse(nothing, "no command was sent");
  });
}

TEST(ExtendedMailbox, only_running_adapters_of_the_newer_interface_take_one) {
  json scenario = small_scenario();
  for (const auto& [sli_mode, condition, status] :
       {std::tuple{3, "ok", VMKMGMT_SIM_DRIVER_NOT_SUPPORTED}, std::tuple{4, "failed", VMKMGMT_SIM_DRIVER_NOT_READY},
        std::tuple{4, "ok", VMKMGMT_SIM_DRIVER_OK}}) {
    scenario["adapters"][0]["sli_mode"] = sli_mode;
    scenario["adapters"][0]["condition"] = condition;
    under_scenario(scenario, [expected = std::uint32_t{status}] {
      Session session;
      Exchange request = write_request("any", 0, {1});
      request.header.brdno = 2;
      EXPECT_EQ(session.call<Callback::kMboxSliCfgExt>(request.header, request.buffer).status, expected);
    });
  }
}

}  // namespace
