#include <numeric>

#include "support/adapter_test.h"
#include "vaskdfc/access.h"
#include "vaskdfc/result.h"

namespace vaskdfc {
namespace {

using test::ByteVector;

constexpr std::pair<std::uint32_t, std::uint32_t> kFailures[] = {{9, 0}, {0, 0xBAD0020}, {9, 0xBAD0020}};

// Bytes that would tell if words were turned.
ByteVector numbered(std::size_t bytes) {
  ByteVector result(bytes);
  std::iota(result.begin(), result.end(), std::uint8_t{1});
  return result;
}

class PciConfigTest : public test::AdapterTest {
 protected:
  static test::ExpectedCall read_call(std::uint32_t offset, std::uint32_t count) {
    return {.callback = Callback::kReadPci,
            .sent = {.brdno = kDriverBoard, .arg1 = offset, .arg2 = count},
            .payload = {numbered(4096)}};
  }
  static test::ExpectedCall write_call(std::uint32_t offset, std::uint32_t count) {
    return {.callback = Callback::kWritePci,
            .sent = {.brdno = kDriverBoard, .arg1 = offset, .arg2 = count},
            .sent_payload = {numbered(count)}};
  }
  // Reads into memory with room for more; `received` bytes must arrive, and no further one.
  template <typename Operation>
  static std::uint32_t read(Operation operation, std::uint32_t offset, std::uint32_t count, std::size_t received) {
    ByteVector memory(8192, 0xEE);
    const std::uint32_t result = operation(kBoard, memory.data(), offset, count);
    ByteVector expected = numbered(received);
    expected.resize(memory.size(), 0xEE);
    EXPECT_EQ(memory, expected);
    return result;
  }
  static std::uint32_t write(std::uint32_t offset, std::uint32_t count) {
    ByteVector data = numbered(8192);
    const std::uint32_t result = WritePciCfg(kBoard, data.data(), offset, count);
    EXPECT_EQ(data, numbered(8192));
    return result;
  }
};

TEST_F(PciConfigTest, is_read_under_both_names_in_any_sli_mode) {
  for (const auto operation : {DFC_ReadPciCfg, ReadPciCfg}) {
    for (const auto& [offset, count] : {std::pair{0u, 4096u}, {4096u, 4096u}, {4092u, 4u}, {0u, 0u}, {64u, 256u}}) {
      driver.expect(read_call(offset, count));
      EXPECT_EQ(read(operation, offset, count, count), DFC_OK);
    }
  }
}

TEST_F(PciConfigTest, is_read_at_whole_words_only) {
  for (const auto operation : {DFC_ReadPciCfg, ReadPciCfg}) {
    for (const std::uint32_t wrong : {1u, 2u, 6u, 4095u, 4097u, 4098u, 4100u, 0xFFFFFFFCu}) {
      EXPECT_EQ(read(operation, wrong, 4, 0), DFC_FAILED);
      EXPECT_EQ(read(operation, 0, wrong, 0), DFC_FAILED);
    }
  }
}

TEST_F(PciConfigTest, reads_as_zeros_where_the_driver_writes_nothing) {
  auto call = read_call(0, 16);
  call.payload[0] = numbered(4);
  driver.expect(call);
  ByteVector memory(16, 0xEE);
  EXPECT_EQ(DFC_ReadPciCfg(kBoard, memory.data(), 0, 16), DFC_OK);
  ByteVector expected = numbered(4);
  expected.resize(16, 0);
  EXPECT_EQ(memory, expected);
}

TEST_F(PciConfigTest, is_written_at_whole_words_with_any_count) {
  for (const auto& [offset, count] : {std::pair{0u, 6u}, {0u, 4096u}, {4096u, 4u}, {4u, 0u}, {64u, 1u}}) {
    driver.expect(write_call(offset, count));
    EXPECT_EQ(write(offset, count), DFC_OK);
  }
  for (const std::uint32_t wrong : {1u, 2u, 3u, 4095u, 4097u, 4100u, 0xFFFFFFFCu}) {
    EXPECT_EQ(write(wrong, 4), DFC_FAILED);
    EXPECT_EQ(write(wrong, 5000), DFC_FAILED);
  }
}

TEST_F(PciConfigTest, is_not_written_beyond_4096_bytes) {
  for (const std::uint32_t count : {4097u, 8192u, 0xFFFFFFFFu}) EXPECT_EQ(write(0, count), 22u);
}

TEST_F(PciConfigTest, fails_differently_when_read_and_when_written) {
  for (const auto& [platform_status, driver_status] : kFailures) {
    auto failed_read = read_call(0, 8);
    auto failed_write = write_call(0, 8);
    for (test::ExpectedCall* const call : {&failed_read, &failed_write}) {
      call->platform_status = platform_status;
      call->driver_status = driver_status;
      driver.expect(*call);
    }
    EXPECT_EQ(read(DFC_ReadPciCfg, 0, 8, 0), 1u);
    EXPECT_EQ(write(0, 8), 22u);
  }
}

TEST_F(PciConfigTest, needs_memory) {
  test::c_library.refused_bytes = 4096;
  ByteVector bytes(8, 0xEE);
  EXPECT_EQ(DFC_ReadPciCfg(kBoard, bytes.data(), 0, 8), 1u);
  EXPECT_EQ(bytes, ByteVector(8, 0xEE));
  EXPECT_EQ(WritePciCfg(kBoard, bytes.data(), 0, 8), 22u);
}

TEST_F(PciConfigTest, is_logged) {
  start_log();
  driver.expect(read_call(0, 8));
  EXPECT_EQ(read(ReadPciCfg, 0, 8, 8), DFC_OK);
  driver.expect(write_call(0, 8));
  EXPECT_EQ(write(0, 8), DFC_OK);
  auto failure = read_call(0, 8);
  failure.driver_status = 0xBAD0020;
  driver.expect(failure);
  EXPECT_EQ(read(DFC_ReadPciCfg, 0, 8, 0), DFC_FAILED);
  failure = write_call(0, 8);
  failure.platform_status = 9;
  driver.expect(failure);
  EXPECT_EQ(write(0, 8), 22u);
  EXPECT_EQ(write(2, 8), DFC_FAILED);  // never sent

  const std::string read_line = test::call_line("DFC_ReadPciCfg", 391, "TREL_MGMT_READ_PCI");
  const std::string write_line = test::call_line("WritePciCfg", 464, "TREL_MGMT_WRITE_PCI");
  EXPECT_EQ(log(), read_line + test::ok_line("DFC_ReadPciCfg", 394, "TREL_MGMT_READ_PCI") + write_line +
                       test::ok_line("WritePciCfg", 467, "TREL_MGMT_WRITE_PCI") + read_line +
                       test::error_line("DFC_ReadPciCfg", 394, "TREL_MGMT_READ_PCI", "x0:xbad0020") + write_line +
                       test::error_line("WritePciCfg", 467, "TREL_MGMT_WRITE_PCI", "x9:x0"));
}

TEST(PciDataTest, is_little_endian_already) {
  for (const std::uint32_t count : {0u, 3u, 4u, 4096u}) {
    ByteVector data = numbered(4096);
    SwapPciData(data.data(), count);
    EXPECT_EQ(data, numbered(4096));
  }
}

}  // namespace
}  // namespace vaskdfc
