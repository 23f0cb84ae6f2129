// Commands to units, requests to ports and to the fabric.
#include <vector>

#include "calls.h"

namespace {

constexpr std::uint64_t kFirstUnit = 0;
constexpr std::uint64_t kReadOnlyUnit = 4U << 8;  // LUN 4 as its bytes stand in memory

// What came back of a command.
struct Exchange {
  std::vector<std::uint8_t> data = std::vector<std::uint8_t>(512);
  std::uint32_t data_bytes = 512;
  std::array<std::uint8_t, DFC_SCSI_SENSE_BYTES> sense{};
  std::uint32_t sense_bytes = 0;
  std::array<std::uint8_t, 160> response{};
  std::uint32_t response_bytes = 160;

  std::uint32_t big_endian_word(std::size_t at) const {
    std::uint32_t word = 0;
    for (std::size_t i = at; i < at + sizeof(word); ++i) word = word << 8 | data[i];
    return word;
  }
};

FcpCmndBlock inquiry() {
  FcpCmndBlock command{};
  command.DataDirection = FCP_READ_DATA;
  command.CDB[0] = 0x12;
  command.CDB[4] = 36;
  command.DataLength[3] = 36;
  return command;
}

constexpr std::uint32_t kCommandBytes = sizeof(FcpCmndBlock);

void expect_inquiry_data(const Exchange& exchange, std::uint32_t bytes = 36) {
  EXPECT_EQ(exchange.data_bytes, bytes);
  EXPECT_EQ(exchange.sense_bytes, 0u);
  EXPECT_EQ(std::string(exchange.data.begin() + 8, exchange.data.begin() + 14), "KESTAR");
}

TEST_F(Operations, send_scsi_commands) {
  const FcpCmndBlock command = inquiry();
  Exchange to;
  EXPECT_EQ(OPERATION(SendScsiCmd)(kConverged, &kArrayPort, &command, kCommandBytes, to.data.data(), &to.data_bytes,
                                   to.sense.data(), &to.sense_bytes),
            HBA_STATUS_OK);
  expect_inquiry_data(to);
  Exchange from_to;
  EXPECT_EQ(OPERATION(SendScsiCmdByWWN)(kConverged, &kConvergedPort, &kArrayPort, &command, kCommandBytes, from_to.data.data(),
                                        &from_to.data_bytes, from_to.sense.data(), &from_to.sense_bytes),
            HBA_STATUS_OK);
  expect_inquiry_data(from_to);
}

void expect_response(const Exchange& exchange, std::uint32_t result) {
  EXPECT_EQ(result, HBA_STATUS_OK);
  expect_inquiry_data(exchange);
  EXPECT_GE(exchange.response_bytes, 24u);
}

TEST_F(Operations, send_fcp_commands) {
  const FcpCmndBlock command = inquiry();
  for (const auto operation : {OPERATION(DFC_SendFcpCmd), OPERATION(SendFcpCmd)}) {
    Exchange to;
    const std::uint32_t result = operation(kConverged, &kArrayPort, &command, kCommandBytes, to.data.data(), &to.data_bytes,
                                           to.response.data(), &to.response_bytes);
    expect_response(to, result);
  }
  Exchange extra;
  expect_response(extra, OPERATION(SendFcpCmdEx)(kConverged, &kArrayPort, &command, kCommandBytes, extra.data.data(),
                                                 &extra.data_bytes, extra.response.data(), &extra.response_bytes, 1));
  Exchange from_to;
  expect_response(from_to,
                  OPERATION(SendFcpCmdByWWN)(kConverged, &kConvergedPort, &kArrayPort, &command, kCommandBytes, from_to.data.data(),
                                             &from_to.data_bytes, from_to.response.data(), &from_to.response_bytes, 0));
}

TEST_F(Operations, ask_units_what_they_are) {
  Exchange to;
  to.data_bytes = 96;
  EXPECT_EQ(OPERATION(SendScsiInquiry)(kConverged, &kArrayPort, kFirstUnit, 0, 0, to.data.data(), &to.data_bytes, to.sense.data(),
                                       &to.sense_bytes),
            HBA_STATUS_OK);
  expect_inquiry_data(to, to.data_bytes);
  EXPECT_GE(to.data_bytes, 36u);
  Exchange page;
  page.data_bytes = 252;
  EXPECT_EQ(OPERATION(DFC_SendScsiInquiryByWWN)(kConverged, &kConvergedPort, &kArrayPort, kFirstUnit, 1, 0x80, page.data.data(),
                                                &page.data_bytes, page.sense.data(), &page.sense_bytes),
            HBA_STATUS_OK);
  EXPECT_EQ(page.data[1], 0x80);
}

TEST_F(Operations, ask_units_for_their_size) {
  constexpr std::uint32_t kLastBlock = 8191;
  Exchange to;
  to.data_bytes = 8;
  EXPECT_EQ(OPERATION(SendReadCapacity)(kConverged, &kArrayPort, kFirstUnit, to.data.data(), &to.data_bytes, to.sense.data(),
                                        &to.sense_bytes),
            HBA_STATUS_OK);
  EXPECT_EQ(to.big_endian_word(0), kLastBlock);
  EXPECT_EQ(to.big_endian_word(4), 512u);
  // The response's address is part of the LUN, so that no unit answers but by its sense.
  Exchange from_to;
  from_to.data_bytes = 8;
  EXPECT_EQ(OPERATION(DFC_SendReadCapacityByWWN)(kConverged, &kConvergedPort, &kArrayPort, 0, from_to.data.data(),
                                                 &from_to.data_bytes, from_to.sense.data(), &from_to.sense_bytes),
            HBA_STATUS_OK);
  EXPECT_EQ(from_to.sense_bytes, 18u);
}

TEST_F(Operations, ask_targets_for_their_units) {
  constexpr std::uint32_t kListBytes = 5 * 8;
  Exchange to;
  EXPECT_EQ(OPERATION(SendReportLUNs)(kConverged, &kArrayPort, to.data.data(), &to.data_bytes, to.sense.data(), &to.sense_bytes),
            HBA_STATUS_OK);
  EXPECT_EQ(to.big_endian_word(0), kListBytes);
  Exchange from_to;
  EXPECT_EQ(OPERATION(DFC_SendReportLUNsByWWN)(kConverged, &kConvergedPort, &kArrayPort, from_to.data.data(), &from_to.data_bytes,
                                               from_to.sense.data(), &from_to.sense_bytes),
            HBA_STATUS_OK);
  EXPECT_EQ(from_to.data, to.data);
}

TEST_F(Operations, write_and_read_units) {
  constexpr std::uint32_t kBlock = 5;
  Exchange write;
  write.data.assign(write.data.size(), 0x5A);
  EXPECT_EQ(OPERATION(SendScsiWrite)(kConverged, &kArrayPort, kFirstUnit, kBlock, write.data.data(), &write.data_bytes,
                                     write.sense.data(), &write.sense_bytes),
            HBA_STATUS_OK);
  EXPECT_EQ(write.sense_bytes, 0u);
  Exchange read;
  EXPECT_EQ(OPERATION(SendScsiRead)(kConverged, &kArrayPort, kFirstUnit, kBlock, read.data.data(), &read.data_bytes,
                                    read.sense.data(), &read.sense_bytes),
            HBA_STATUS_OK);
  EXPECT_EQ(read.data_bytes, 512u);
  EXPECT_EQ(read.data, write.data);
  Exchange refused;
  EXPECT_EQ(OPERATION(SendScsiWrite)(kConverged, &kArrayPort, kReadOnlyUnit, 0, refused.data.data(), &refused.data_bytes,
                                     refused.sense.data(), &refused.sense_bytes),
            HBA_STATUS_OK);
  EXPECT_EQ(refused.sense[2], 7) << "write protected";
}

TEST_F(Operations, ask_other_ports) {
  dfc_els_descriptor descriptor{};
  std::memcpy(descriptor.bytes, kArrayPort.wwn, sizeof(kArrayPort.wwn));
  const std::array<std::uint8_t, 8> echo{0x10, 0, 0, 0, 'e', 'c', 'h', 'o'};
  std::array<std::uint8_t, DFC_ELS_BYTES> reply{};
  std::uint32_t bytes = 0;
  EXPECT_EQ(OPERATION(DFC_SendELSCmd)(kConverged, &descriptor, echo.data(), echo.size(), reply.data(), &bytes), DFC_OK);
  EXPECT_EQ(bytes, echo.size());
  EXPECT_EQ(reply[0], 2) << "accepted";
  EXPECT_EQ(std::memcmp(&reply[4], &echo[4], 4), 0);
}

// GID_FT: which ports are FCP's.
constexpr std::array<std::uint8_t, 20> kFcpPortsRequest{1, 0, 0, 0, 0xFC, 2, 0, 0, 0x01, 0x71, 0, 0, 0, 0, 0, 0, 0, 0, 0, 8};

TEST_F(Operations, ask_the_name_server) {
  std::vector<std::uint8_t> reply(DFC_SERVICE_BYTES);
  constexpr std::int32_t kNameServer = 0xFFFFFC;
  const std::int32_t bytes = OPERATION(GetCTInfo)(kConverged, kNameServer, kFcpPortsRequest.data(), kFcpPortsRequest.size(),
                                                  reply.data(), DFC_SERVICE_BYTES);
  EXPECT_GT(bytes, 16);
  EXPECT_EQ(reply[8] << 8 | reply[9], 0x8002) << "accepted";
  EXPECT_EQ(OPERATION(GetCTInfo)(kConverged, 1, kFcpPortsRequest.data(), kFcpPortsRequest.size(), reply.data(), 16), DFC_CT_FAILED);
  std::vector<std::uint8_t> passed(DFC_SERVICE_BYTES);
  std::uint32_t passed_bytes = DFC_SERVICE_BYTES;
  EXPECT_EQ(OPERATION(SendCTPassThru)(kConverged, kFcpPortsRequest.data(), kFcpPortsRequest.size(), passed.data(), &passed_bytes),
            DFC_OK);
  EXPECT_EQ(passed_bytes, static_cast<std::uint32_t>(bytes));
  EXPECT_EQ(passed, reply);
}

TEST_F(Operations, pass_on_management_commands) {
  constexpr dfc_mgmt_command kReturnWhatIsSent{{1}};
  std::array<std::uint8_t, 4> request{1, 2, 3, 4};
  std::vector<std::uint8_t> reply(DFC_SERVICE_BYTES);
  std::uint32_t bytes = DFC_SERVICE_BYTES;
  EXPECT_EQ(OPERATION(SendMgmtCommand)(kConverged, &kReturnWhatIsSent, request.data(), request.size(), reply.data(), &bytes, 0),
            DFC_OK);
  EXPECT_EQ(bytes, request.size());
  EXPECT_TRUE(std::equal(request.begin(), request.end(), reply.begin()));
  EXPECT_EQ(OPERATION(SendMgmtResponse)(kConverged, request.data(), request.size(), 0), DFC_OK);
  EXPECT_NE(OPERATION(SendMgmtResponse)(kPlugged, request.data(), request.size(), 0), DFC_OK) << "its link is down";
}

}  // namespace
