#include "support/adapter_test.h"
#include "vaskdfc/mapping.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;

constexpr const char* kCallback = "TREL_MGMT_LIST_BIND";

class BindingsTest : public test::AdapterTest {
 protected:
  // A list in memory of exactly its size.
  FcpBindList& list(std::uint32_t room) {
    memory_.assign(4 + sizeof(FcpBinding) * room, 0xEE);
    auto& result = *reinterpret_cast<FcpBindList*>(memory_.data());
    result.count = room;
    return result;
  }
  // A reply of that count, all of whose entries are filled.
  static ByteVector reply(std::uint32_t count) {
    ByteVector bytes(131076, 0xB1);
    std::ranges::copy(test::bytes_of(count), bytes.begin());
    return bytes;
  }
  test::ExpectedCall call(std::uint32_t room, const ByteVector& answer) {
    return {.callback = Callback::kListBind, .sent = {.brdno = kDriverBoard, .arg2 = 131076, .arg4 = room}, .payload = {answer}};
  }
  // The list holds that many entries; nothing behind them was touched.
  void expect_entries(std::size_t entries) {
    for (std::size_t i = 4; i < memory_.size(); ++i) {
      ASSERT_EQ(memory_[i], i < 4 + 32 * entries ? 0xB1 : 0xEE) << i;
    }
  }

 private:
  ByteVector memory_;
};

TEST_F(BindingsTest, go_through_a_temporary_where_the_caller_has_less_room_than_a_reply) {
  driver.expect(call(4095, reply(3)));
  start_log();
  FcpBindList& bindings = list(4095);
  EXPECT_EQ(GetFcpBindList(kBoard, &bindings), HBA_STATUS_OK);
  EXPECT_EQ(bindings.count, 3u);
  expect_entries(3);
  EXPECT_EQ(log(), test::call_line("GetFcpBindList", 528, kCallback) + test::ok_line("GetFcpBindList", 532, kCallback));
}

TEST_F(BindingsTest, go_straight_to_a_caller_who_has_as_much) {
  driver.expect(call(4096, reply(3)));
  FcpBindList& bindings = list(4096);
  EXPECT_EQ(GetFcpBindList(kBoard, &bindings), HBA_STATUS_OK);
  EXPECT_EQ(bindings.count, 3u);
  expect_entries(4096);  // the driver wrote them all
}

TEST_F(BindingsTest, are_counted_as_the_driver_says_and_copied_as_far_as_they_can_be) {
  driver.expect(call(0, reply(0)));
  FcpBindList& none = list(0);
  EXPECT_EQ(GetFcpBindList(kBoard, &none), HBA_STATUS_OK);
  EXPECT_EQ(none.count, 0u);

  driver.expect(call(4095, reply(0xFFFFFFFF)));
  // A driver that does not honour the room fills a whole reply's worth.
  FcpBindList& many = list(4096);
  many.count = 4095;
  EXPECT_EQ(GetFcpBindList(kBoard, &many), HBA_STATUS_OK);
  EXPECT_EQ(many.count, 0xFFFFFFFFu);
  expect_entries(4096);
}

TEST_F(BindingsTest, have_the_drivers_first_argument_for_a_count_when_it_fails) {
  start_log(kLogError);
  FcpBindList& bindings = list(2);
  test::ExpectedCall failure = call(2, {});
  failure.driver_status = 0xBAD0020;
  failure.arg1 = 77;
  driver.expect(failure);
  EXPECT_EQ(GetFcpBindList(kBoard, &bindings), HBA_STATUS_ERROR);
  EXPECT_EQ(bindings.count, 77u);

  failure = call(2, {});
  failure.platform_status = 9;
  failure.arg1 = 77;
  driver.expect(failure);
  bindings.count = 2;
  EXPECT_EQ(GetFcpBindList(kBoard, &bindings), HBA_STATUS_ERROR);
  EXPECT_EQ(bindings.count, 2u);
  expect_entries(0);
  EXPECT_EQ(log(), test::error_line("GetFcpBindList", 532, kCallback, "x0:xbad0020") +
                       test::error_line("GetFcpBindList", 532, kCallback, "x9:x0"));
}

TEST_F(BindingsTest, need_memory_for_the_temporary_only) {
  test::c_library.refused_bytes = 131076;
  FcpBindList& few = list(2);
  EXPECT_EQ(GetFcpBindList(kBoard, &few), DFC_NO_MEMORY);
  driver.expect(call(4096, reply(0)));
  FcpBindList& many = list(4096);
  EXPECT_EQ(GetFcpBindList(kBoard, &many), HBA_STATUS_OK);
}

TEST_F(BindingsTest, of_the_persistent_kind_are_none) {
  ByteVector binding(8, 0xEE);
  EXPECT_EQ(GetFcpPersistentBinding(kBoard, binding.data()), HBA_STATUS_OK);
  EXPECT_EQ(binding, (ByteVector{0, 0, 0, 0, 0xEE, 0xEE, 0xEE, 0xEE}));
}

}  // namespace
}  // namespace vaskdfc
