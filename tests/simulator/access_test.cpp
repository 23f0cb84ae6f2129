// Raw access to adapters: memory, control registers and PCI configuration space.
#include <algorithm>
#include <memory>

#include "record_fields.h"

namespace {

using vaskdfc::AccessData;

constexpr std::uint32_t kOlder = 7;
constexpr std::uint32_t kNewer = 3;
constexpr std::uint32_t kFailed = 12;  // and of the older interface
constexpr std::uint32_t kOutOfRange = VMKMGMT_SIM_DRIVER_OUT_OF_RANGE;

using Bytes = std::vector<std::uint8_t>;

struct Place {
  std::uint32_t board, offset, bytes;
};

template <Callback kCallback>
Bytes read(Session& session, const Place& place) {
  auto data = garbage<AccessData>();
  EXPECT_EQ(session.call<kCallback>({.brdno = place.board, .arg1 = place.offset, .arg2 = place.bytes}, data).status, 0u);
  if (place.bytes < sizeof(data)) {
    EXPECT_EQ(data.bytes[place.bytes], 0xA5) << "beyond what was asked for";
  }
  return {data.bytes, data.bytes + place.bytes};
}

template <Callback kCallback>
std::uint32_t write(Session& session, std::uint32_t board, std::uint32_t offset, const Bytes& bytes) {
  auto data = garbage<AccessData>();
  std::ranges::copy(bytes, data.bytes);
  const auto count = static_cast<std::uint32_t>(bytes.size());
  return session.call<kCallback>({.brdno = board, .arg1 = offset, .arg2 = count}, data).status;
}

template <Callback kCallback>
std::uint32_t refusal(Session& session, const Place& place) {
  auto data = garbage<AccessData>();
  const std::uint32_t status =
      session.call<kCallback>({.brdno = place.board, .arg1 = place.offset, .arg2 = place.bytes}, data).status;
  EXPECT_EQ(data.bytes[0], 0xA5);
  return status;
}

TEST(Memory, is_zero_until_it_is_written_and_is_read_back) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(read<Callback::kReadMem>(session, {kOlder, 0x3F000, 4096}), Bytes(4096));
    const Bytes written = pattern(4096, 3);
    EXPECT_EQ(write<Callback::kWriteMem>(session, kOlder, 0x12345, written), 0u);
    EXPECT_EQ(read<Callback::kReadMem>(session, {kOlder, 0x12345, 4096}), written);
    EXPECT_EQ(read<Callback::kReadMem>(session, {kOlder, 0x12346, 2}), Bytes(written.begin() + 1, written.begin() + 3));
    EXPECT_EQ(write<Callback::kWriteMem>(session, kOlder, 0x12345, {}), 0u);
    EXPECT_EQ(write<Callback::kWriteMem>(session, kOlder, 0x3FFFF, {9}), 0u);
    EXPECT_EQ(read<Callback::kReadMem>(session, {kOlder, 0x3FFFF, 1}), Bytes{9});
  });
}

TEST(Memory, ends_and_so_does_the_record) {
  in_process({}, [] {
    Session session;
    for (const auto& [address, bytes] : {std::pair{0u, 4097u}, std::pair{0u, 0xFFFFFFFFu}, std::pair{0x3FFFFu, 2u},
                                         std::pair{0x40001u, 0u}, std::pair{0xFFFFFFFFu, 2u}, std::pair{0xFFFFF000u, 4096u}}) {
      EXPECT_EQ(refusal<Callback::kReadMem>(session, {kOlder, address, bytes}), kOutOfRange) << address;
      auto data = garbage<AccessData>();
      EXPECT_EQ(session.call<Callback::kWriteMem>({.brdno = kOlder, .arg1 = address, .arg2 = bytes}, data).status, kOutOfRange);
    }
    EXPECT_EQ(read<Callback::kReadMem>(session, {kOlder, 0x40000, 0}), Bytes());
  });
}

TEST(Memory, and_registers_are_those_of_running_adapters_of_the_older_interface) {
  in_process({}, [] {
    Session session;
    for (const auto& [board, status] :
         {std::pair{kNewer, VMKMGMT_SIM_DRIVER_NOT_SUPPORTED}, std::pair{kFailed, VMKMGMT_SIM_DRIVER_NOT_READY}}) {
      EXPECT_EQ(refusal<Callback::kReadMem>(session, {board, 0, 4}), std::uint32_t{status});
      EXPECT_EQ(write<Callback::kWriteMem>(session, board, 0, Bytes(4)), std::uint32_t{status});
      EXPECT_EQ(session.call<Callback::kReadCtlReg>({.brdno = board}).status, std::uint32_t{status});
      EXPECT_EQ(session.call<Callback::kWriteCtlReg>({.brdno = board}).status, std::uint32_t{status});
    }
  });
}

std::uint32_t control_register(Session& session, std::uint32_t offset) {
  const dfc_mgmt_hdr header = session.call<Callback::kReadCtlReg>({.brdno = kOlder, .arg1 = offset});
  EXPECT_EQ(header.status, 0u);
  return header.arg4;
}

TEST(Registers, tell_the_adapters_state_and_keep_what_may_be_written) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(control_register(session, 0x00), 0x56015A41u);
    EXPECT_EQ(control_register(session, 0x04), 0x3u);
    EXPECT_EQ(control_register(session, 0x08), 0x0Fu);
    EXPECT_EQ(control_register(session, 0x0C), 0u);
    for (const std::uint32_t offset : {0x00u, 0x04u, 0x08u, 0x0Cu}) {
      EXPECT_EQ(session.call<Callback::kWriteCtlReg>({.brdno = kOlder, .arg1 = offset, .arg4 = 0xCAFEBABE}).status, 0u);
    }
    EXPECT_EQ(control_register(session, 0x00), 0x56015A41u);
    EXPECT_EQ(control_register(session, 0x04), 0x3u);
    EXPECT_EQ(control_register(session, 0x08), 0x3Eu);
    EXPECT_EQ(control_register(session, 0x0C), 0xCAFEBABEu);
    session.call<Callback::kSetDiag>({.brdno = kOlder, .arg6 = 0x12});
    EXPECT_EQ(control_register(session, 0x04), 0x1u);
    for (const std::uint32_t offset : {0x01u, 0x10u, 0xFFFFFFFCu}) {
      EXPECT_EQ(session.call<Callback::kReadCtlReg>({.brdno = kOlder, .arg1 = offset}).status, kOutOfRange);
      EXPECT_EQ(session.call<Callback::kWriteCtlReg>({.brdno = kOlder, .arg1 = offset}).status, kOutOfRange);
    }
  });
}

std::uint32_t half(const Bytes& space, std::size_t offset) { return unsigned{space[offset + 1]} << 8 | space[offset]; }

std::uint32_t configuration_word(Session& session, std::uint32_t board, std::uint32_t offset) {
  return word(*read<Callback::kReadPci>(session, {board, offset, 4}).data(), 0);
}

TEST(Configuration, is_a_device_with_capabilities) {
  in_process({}, [] {
    Session session;
    for (const auto& [board, device] : {std::pair{kOlder, 0x5601u}, std::pair{kNewer, 0x5603u}, std::pair{kFailed, 0x5601u}}) {
      const Bytes space = read<Callback::kReadPci>(session, {board, 0, 4096});
      EXPECT_EQ(half(space, 0x00), 0x5A41u);
      EXPECT_EQ(half(space, 0x02), device);
      EXPECT_EQ(space[0x0B] << 8 | space[0x0A], 0x0C04) << "Fibre Channel";
      EXPECT_EQ(space[0x0E] & 0x7F, 0) << "a device of type 0";
      ASSERT_NE(half(space, 0x06) & 0x10, 0u) << "there are capabilities";
      Bytes capabilities;
      for (std::size_t place = space[0x34]; place != 0 && capabilities.size() < 48; place = space[place + 1]) {
        EXPECT_EQ(place % 4, 0u);
        capabilities.push_back(space[place]);
      }
      EXPECT_EQ(capabilities, (Bytes{0x01, 0x11, 0x10}));
      std::vector<std::uint32_t> extended;
      for (std::size_t place = 0x100; place != 0 && extended.size() < 48; place = half(space, place + 2) >> 4) {
        extended.push_back(half(space, place));
      }
      EXPECT_EQ(extended, (std::vector<std::uint32_t>{0x0001, 0x0003}));
    }
    const Bytes serial = read<Callback::kReadPci>(session, {kOlder, 0x144, 8});
    EXPECT_EQ(Bytes(serial.rbegin(), serial.rend()), (Bytes{0x10, 0, 0, 0x5a, 0x41, 0x56, 0x01, 0x20}));
  });
}

TEST(Configuration, keeps_what_may_be_written_and_nothing_else) {
  in_process({}, [] {
    Session session;
    const Bytes before = read<Callback::kReadPci>(session, {kNewer, 0, 4096});
    EXPECT_EQ(write<Callback::kWritePci>(session, kNewer, 0, Bytes(4096, 0xFF)), 0u);
    EXPECT_EQ(configuration_word(session, kNewer, 0x00), 0x56035A41u);
    EXPECT_EQ(configuration_word(session, kNewer, 0x10), 0xFFFFC004u) << "16 KiB";
    EXPECT_EQ(configuration_word(session, kNewer, 0x18), 0xFFFE0004u) << "128 KiB";
    EXPECT_EQ(configuration_word(session, kNewer, 0x04), 0x00100546u);
    EXPECT_EQ(configuration_word(session, kNewer, 0x50) >> 16, 0xC01Fu);
    EXPECT_EQ(write<Callback::kWritePci>(session, kNewer, 0, before), 0u);
    EXPECT_EQ(read<Callback::kReadPci>(session, {kNewer, 0, 4096}), before);
    EXPECT_EQ(write<Callback::kWritePci>(session, kNewer, 0x3C, {0x55, 0xFF}), 0u) << "any number of bytes";
    EXPECT_EQ(configuration_word(session, kNewer, 0x3C), 0x00000155u);
    EXPECT_EQ(configuration_word(session, 1, 0x3C), 0x0000010Bu) << "another adapter";
  });
}

TEST(Configuration, ends_at_4096_bytes) {
  in_process({}, [] {
    Session session;
    EXPECT_EQ(read<Callback::kReadPci>(session, {kNewer, 4096, 0}), Bytes());
    EXPECT_EQ(read<Callback::kReadPci>(session, {kNewer, 4092, 4}), Bytes(4));
    for (const auto& [offset, bytes] : {std::pair{4096u, 1u}, std::pair{4u, 4093u}, std::pair{0u, 4097u}, std::pair{2u, 2u},
                                        std::pair{0xFFFFFFFCu, 8u}, std::pair{0u, 0xFFFFFFFFu}}) {
      EXPECT_EQ(refusal<Callback::kReadPci>(session, {kNewer, offset, bytes}), kOutOfRange) << offset;
      auto data = garbage<AccessData>();
      EXPECT_EQ(session.call<Callback::kWritePci>({.brdno = kNewer, .arg1 = offset, .arg2 = bytes}, data).status, kOutOfRange);
    }
  });
}

TEST(RawAccess, survives_the_process_in_the_state_folder) {
  const TemporaryFolder folder;
  const Environment environment{{VMKMGMT_SIM_STATE, folder.path()}};
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(write<Callback::kWriteMem>(session, kOlder, 0x100, {1, 2, 3}), 0u);
    EXPECT_EQ(write<Callback::kWritePci>(session, kOlder, 0x3C, {0x77}), 0u);
    session.call<Callback::kWriteCtlReg>({.brdno = kOlder, .arg1 = 0x0C, .arg4 = 5});
  });
  in_process(environment, [] {
    Session session;
    EXPECT_EQ(read<Callback::kReadMem>(session, {kOlder, 0x100, 3}), (Bytes{1, 2, 3}));
    EXPECT_EQ(read<Callback::kReadPci>(session, {kOlder, 0x3C, 1}), Bytes{0x77});
    EXPECT_EQ(control_register(session, 0x0C), 5u);
  });
  const std::string file = folder.write("registers-1000005a41560120.bin", "torn");
  EXPECT_EQ(
      in_process(environment,
                 [] {
                   vmk_MgmtUserHandle handle = nullptr;
                   EXPECT_EQ(open_handle(Signature(), handle), std::uint32_t{VMKMGMT_SIM_BAD_STATE});
                 }),
      "vmkmgmt simulator: " + file + ": damaged: the whole file: expected 8 bytes; remove the file to start with fresh state\n");
}

}  // namespace
