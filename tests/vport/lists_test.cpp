#include "support/adapter_test.h"
#include "vaskdfc/result.h"
#include "vaskdfc/vport.h"

namespace vaskdfc {
namespace {

using test::bytes_of;
using test::ByteVector;

constexpr HbaWwn kWwn{{0x10, 1, 2, 3, 4, 5, 6, 7}};
constexpr std::uint8_t kUntouched = 0xEE;
constexpr std::uint8_t kListed = 0xA5;
constexpr std::uint32_t kDoesNotFit = 0xBAD00B4;

// A list in memory of exactly its size, and a reply with a count.
template <typename List, std::size_t kEntryBytes>
struct Caller {
  explicit Caller(std::uint32_t room) : memory(4 + kEntryBytes * room, kUntouched) { list().numEntries = room; }
  List& list() { return *reinterpret_cast<List*>(memory.data()); }

  ByteVector memory;
};
using Vports = Caller<dfc_vport_list, 20>;
using Nodes = Caller<dfc_node_list, 308>;

ByteVector reply(std::size_t bytes, std::uint32_t count) {
  ByteVector result(bytes, kListed);
  std::ranges::copy(bytes_of(count), result.begin());
  return result;
}

// --- DFC_VPGetList

class VportListTest : public test::AdapterTest {
 protected:
  test::ExpectedCall call(std::uint32_t room, std::uint32_t count) {
    return {.callback = Callback::kVportGetList, .sent = {.brdno = kDriverBoard, .arg2 = room}, .payload = {reply(81924, count)}};
  }
};

TEST_F(VportListTest, copies_as_many_entries_as_the_driver_counts) {
  driver.expect(call(5, 3));
  start_log();
  Vports caller(5);
  EXPECT_EQ(DFC_VPGetList(kBoard, &caller.list()), DFC_OK);
  ByteVector expected(4 + 5 * 20, kUntouched);
  std::ranges::copy(reply(4 + 3 * 20, 3), expected.begin());
  EXPECT_EQ(caller.memory, expected);
  constexpr const char* kCallback = "TREL_MGMT_VPORT_GET_LIST";
  EXPECT_EQ(log(), test::call_line("DFC_VPGetList", 172, kCallback) + test::ok_line("DFC_VPGetList", 175, kCallback));
}

TEST_F(VportListTest, copies_no_more_than_a_reply_can_hold) {
  driver.expect(call(1, 0xFFFFFFFF));
  Vports caller(4096);
  caller.list().numEntries = 1;
  EXPECT_EQ(DFC_VPGetList(kBoard, &caller.list()), DFC_OK);
  EXPECT_EQ(caller.memory, reply(81924, 0xFFFFFFFF));
}

TEST_F(VportListTest, leaves_the_callers_list_alone_when_it_fails) {
  const std::tuple<std::uint32_t, std::uint32_t, std::uint32_t> kFailures[] = {
      {0, kDoesNotFit, 7}, {9, kDoesNotFit, 7}, {0, 0xBAD0020, 1}, {9, 0, 1}};
  for (const auto& [platform_status, driver_status, result] : kFailures) {
    auto failure = call(2, 3);
    failure.platform_status = platform_status;
    failure.driver_status = driver_status;
    driver.expect(failure);
    Vports caller(2);
    EXPECT_EQ(DFC_VPGetList(kBoard, &caller.list()), result);
    EXPECT_EQ(caller.memory, Vports(2).memory);
  }
  test::c_library.refused_bytes = 81924;
  Vports caller(2);
  EXPECT_EQ(DFC_VPGetList(kBoard, &caller.list()), DFC_NO_MEMORY);
}

// --- DFC_GetAllNodeInfoByWWN

class NodeListTest : public test::AdapterTest {
 protected:
  test::ExpectedCall call(std::uint32_t room, std::uint32_t count) {
    ByteVector key(28, 0);
    std::ranges::copy(kWwn.wwn, key.begin() + 8);
    return {.callback = Callback::kVportGetNodeInfo,
            .sent = {.brdno = kDriverBoard, .arg2 = room},
            .sent_payload = {key},
            .payload = {{}, reply(157700, count)}};
  }
  // The caller's memory with that many nodes, of each the first 304 bytes.
  static ByteVector with_nodes(std::uint32_t room, std::uint32_t count, std::size_t nodes) {
    ByteVector memory = Nodes(room).memory;
    std::ranges::copy(bytes_of(count), memory.begin());
    for (std::size_t i = 0; i < nodes; ++i) {
      std::fill_n(memory.begin() + static_cast<std::ptrdiff_t>(4 + 308 * i), 304, kListed);
    }
    return memory;
  }
};

TEST_F(NodeListTest, copies_304_bytes_of_every_node) {
  driver.expect(call(3, 2));
  start_log();
  Nodes caller(3);
  EXPECT_EQ(DFC_GetAllNodeInfoByWWN(kBoard, &kWwn, &caller.list()), DFC_OK);
  EXPECT_EQ(caller.memory, with_nodes(3, 2, 2));
  EXPECT_EQ(caller.memory[308], kUntouched);
  constexpr const char* kFunction = "DFC_GetAllNodeInfoByWWN";
  constexpr const char* kCallback = "TREL_MGMT_VPORT_GET_NODE_INFO";
  EXPECT_EQ(log(), test::call_line(kFunction, 226, kCallback) + test::ok_line(kFunction, 229, kCallback));
}

TEST_F(NodeListTest, counts_no_node_and_more_than_a_reply_can_hold) {
  driver.expect(call(2, 0));
  Nodes none(2);
  EXPECT_EQ(DFC_GetAllNodeInfoByWWN(kBoard, &kWwn, &none.list()), DFC_OK);
  EXPECT_EQ(none.memory, with_nodes(2, 0, 0));

  driver.expect(call(512, 100000));
  Nodes many(512);
  EXPECT_EQ(DFC_GetAllNodeInfoByWWN(kBoard, &kWwn, &many.list()), DFC_OK);
  EXPECT_EQ(many.memory, with_nodes(512, 100000, 512));
}

struct FailedCall {
  std::uint32_t platform_status;
  std::uint32_t driver_status;
  std::uint32_t count;
  std::uint32_t result;
};

TEST_F(NodeListTest, tells_the_count_whatever_the_outcome) {
  const FailedCall kFailures[] = {{0, kDoesNotFit, 9, 7}, {0, kDoesNotFit, 5, 7}, {0, kDoesNotFit, 4, 1}, {0, kDoesNotFit, 0, 1},
                                  {0, 0xBAD0020, 9, 2},   {0, 0xBAD0001, 9, 1},   {9, 0, 9, 1},           {9, kDoesNotFit, 9, 7}};
  for (const FailedCall& failed : kFailures) {
    auto failure = call(4, failed.count);
    failure.platform_status = failed.platform_status;
    failure.driver_status = failed.driver_status;
    driver.expect(failure);
    Nodes caller(4);
    EXPECT_EQ(DFC_GetAllNodeInfoByWWN(kBoard, &kWwn, &caller.list()), failed.result);
    EXPECT_EQ(caller.memory, with_nodes(4, failed.count, 0));
  }
}

TEST_F(NodeListTest, offers_the_room_in_the_reply_too) {
  auto silent = call(4, 0);
  silent.payload[1] = {};
  silent.driver_status = 0xBAD0001;
  driver.expect(silent);
  Nodes caller(4);
  EXPECT_EQ(DFC_GetAllNodeInfoByWWN(kBoard, &kWwn, &caller.list()), DFC_FAILED);
  EXPECT_EQ(caller.memory, with_nodes(4, 4, 0));
}

TEST_F(NodeListTest, sends_nothing_without_memory) {
  test::c_library.refused_bytes = 157700;
  Nodes caller(4);
  EXPECT_EQ(DFC_GetAllNodeInfoByWWN(kBoard, &kWwn, &caller.list()), DFC_NO_MEMORY);
  EXPECT_EQ(caller.memory, Nodes(4).memory);
}

}  // namespace
}  // namespace vaskdfc
