// Adapter memory and control registers.
#include <functional>

#include "support/adapter_test.h"
#include "vaskdfc/access.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;

constexpr std::pair<std::uint32_t, std::uint32_t> kFailures[] = {{9, 0}, {0, 0xBAD0020}, {9, 0xBAD0020}};

class RawAccessTest : public test::AdapterTest {
 protected:
  static test::ExpectedCall memory_call(Callback callback, std::uint32_t count) {
    return {.callback = callback,
            .sent = {.brdno = kDriverBoard, .arg1 = 0x10203040, .arg2 = count},
            .sent_payload = {callback == Callback::kWriteMem ? ByteVector(count, 0xC3) : ByteVector{}},
            .payload = {ByteVector(4096, 0xA5)}};
  }
  // Reads into memory with room for more; `received` bytes must arrive, and no further one.
  std::uint32_t read(std::uint32_t count, std::size_t received) {
    ByteVector memory(std::size_t{count} + 16, 0xEE);
    const std::uint32_t result = ReadMem(kBoard, memory.data(), 0x10203040, count);
    ByteVector expected(memory.size(), 0xEE);
    std::fill_n(expected.begin(), received, std::uint8_t{0xA5});
    EXPECT_EQ(memory, expected);
    return result;
  }
  std::uint32_t write(std::uint32_t count) {
    const ByteVector data(count, 0xC3);
    return WriteMem(kBoard, data.data(), 0x10203040, count);
  }
  // Every operation, with its result for an adapter of SLI mode 4 or above.
  struct Operation {
    std::function<std::uint32_t()> run;
    std::uint32_t unsupported;
  };
  std::vector<Operation> operations() {
    return {{[this] { return read(8, 0); }, 4},
            {[this] { return write(8); }, 4},
            {[this] { return ReadCtlReg(kBoard, &value, 0x40); }, 2},
            {[this] { return WriteCtlReg(kBoard, &value, 0x40); }, 2}};
  }
  test::ExpectedCall call_of(std::size_t operation) const {
    const test::ExpectedCall calls[] = {
        memory_call(Callback::kReadMem, 8),
        memory_call(Callback::kWriteMem, 8),
        {.callback = Callback::kReadCtlReg, .sent = {.brdno = kDriverBoard, .arg1 = 0x40}, .arg4 = 7},
        {.callback = Callback::kWriteCtlReg, .sent = {.brdno = kDriverBoard, .arg1 = 0x40, .arg4 = value}}};
    return calls[operation];
  }
  std::uint32_t value = 0xCAFE0001;
};

TEST_F(RawAccessTest, reads_as_many_bytes_of_memory_as_were_asked_for) {
  for (const std::uint32_t count : {0u, 1u, 255u, 4096u}) {
    for (const std::uint32_t sli_mode : {2u, 3u}) {
      expect_driver_info(sli_mode);
      driver.expect(memory_call(Callback::kReadMem, count));
      EXPECT_EQ(read(count, count), DFC_OK);
    }
  }
}

TEST_F(RawAccessTest, writes_as_many_bytes_of_memory_as_were_given) {
  for (const std::uint32_t count : {0u, 1u, 255u, 4096u}) {
    expect_driver_info(3);
    driver.expect(memory_call(Callback::kWriteMem, count));
    EXPECT_EQ(write(count), DFC_OK);
  }
}

TEST_F(RawAccessTest, refuses_more_than_4096_bytes_of_memory_and_sends_nothing) {
  for (const std::uint32_t count : {4097u, 0x10000u}) {
    expect_driver_info(3);
    EXPECT_EQ(read(count, 0), 22u);
    expect_driver_info(3);
    EXPECT_EQ(write(count), 22u);
  }
  expect_driver_info(3);
  EXPECT_EQ(ReadMem(kBoard, &value, 0, 0xFFFFFFFF), 22u);
  expect_driver_info(4);
  EXPECT_EQ(WriteMem(kBoard, &value, 0, 4097), 4u);
}

TEST_F(RawAccessTest, tells_the_value_of_a_register) {
  for (const std::uint32_t read : {0u, 0xFFFFFFFFu}) {
    expect_driver_info(3);
    driver.expect({.callback = Callback::kReadCtlReg, .sent = {.brdno = kDriverBoard, .arg1 = 0xFFFFFFFC}, .arg4 = read});
    EXPECT_EQ(ReadCtlReg(kBoard, &value, 0xFFFFFFFC), DFC_OK);
    EXPECT_EQ(value, read);
  }
}

TEST_F(RawAccessTest, sets_the_value_of_a_register) {
  expect_driver_info(3);
  driver.expect({.callback = Callback::kWriteCtlReg, .sent = {.brdno = kDriverBoard, .arg1 = 8, .arg4 = 0xCAFE0001}});
  EXPECT_EQ(WriteCtlReg(kBoard, &value, 8), DFC_OK);
  EXPECT_EQ(value, 0xCAFE0001u);
}

TEST_F(RawAccessTest, needs_the_sli_mode) {
  for (const Operation& operation : operations()) {
    expect_no_driver_info();
    EXPECT_EQ(operation.run(), DFC_FAILED);
  }
  EXPECT_EQ(value, 0xCAFE0001u);
}

TEST_F(RawAccessTest, is_for_sli_mode_3_and_below_and_calls_others_by_different_results) {
  for (const std::uint32_t sli_mode : {4u, 5u}) {
    for (const Operation& operation : operations()) {
      expect_driver_info(sli_mode);
      EXPECT_EQ(operation.run(), operation.unsupported);
    }
  }
  EXPECT_EQ(value, 0xCAFE0001u);
}

TEST_F(RawAccessTest, hides_the_drivers_status_behind_22) {
  for (const auto& [platform_status, driver_status] : kFailures) {
    for (std::size_t i = 0; i < operations().size(); ++i) {
      expect_driver_info(3);
      auto failure = call_of(i);
      failure.platform_status = platform_status;
      failure.driver_status = driver_status;
      driver.expect(failure);
      EXPECT_EQ(operations()[i].run(), 22u);
      EXPECT_EQ(value, 0xCAFE0001u);
    }
  }
}

TEST_F(RawAccessTest, of_memory_needs_memory) {
  test::c_library.refused_bytes = 4096;
  expect_driver_info(3);
  EXPECT_EQ(read(8, 0), 22u);
  expect_driver_info(3);
  EXPECT_EQ(write(8), 22u);
}

TEST_F(RawAccessTest, logs_every_call_under_its_own_name) {
  start_log();
  const struct {
    const char* function;
    int call;
    int result;
    const char* callback;
  } kLines[] = {{"ReadMem", 510, 513, "TREL_MGMT_READ_MEM"},
                {"WriteMem", 562, 565, "TREL_MGMT_WRITE_MEM"},
                {"ReadCtlReg", 605, 608, "TREL_MGMT_READ_CTLREG"},
                {"WriteCtlReg", 649, 652, "TREL_MGMT_WRITE_CTLREG"}};
  std::string lines;
  for (std::size_t i = 0; i < operations().size(); ++i) {
    expect_driver_info(3);
    auto failure = call_of(i);
    failure.driver_status = 0xBAD0020;
    driver.expect(failure);
    EXPECT_EQ(operations()[i].run(), 22u);

    lines += driver_info_lines() + test::call_line(kLines[i].function, kLines[i].call, kLines[i].callback) +
             test::error_line(kLines[i].function, kLines[i].result, kLines[i].callback, "x0:xbad0020");
  }
  expect_driver_info(3);
  driver.expect(call_of(2));
  EXPECT_EQ(operations()[2].run(), DFC_OK);
  lines += driver_info_lines() + test::call_line("ReadCtlReg", 605, "TREL_MGMT_READ_CTLREG") +
           test::ok_line("ReadCtlReg", 608, "TREL_MGMT_READ_CTLREG");
  EXPECT_EQ(log(), lines);
}

}  // namespace
}  // namespace vaskdfc
