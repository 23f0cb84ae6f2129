#include "support/adapter_test.h"

#include <iomanip>
#include <sstream>

namespace vaskdfc::test {
namespace {

std::string right_aligned(const std::string& text, int columns) {
  std::ostringstream out;
  out << std::setw(columns) << text;
  return out.str();
}

constexpr const char* kIds = " id[4711:4712]";

}  // namespace

void AdapterTest::expect_driver_info(std::uint32_t sli_mode, std::uint32_t feature_flags) {
  const DriverInfoReply reply{.sli_mode = sli_mode, .feature_flags = feature_flags};
  driver.expect({.callback = Callback::kGetTrelDfcInfo,
                 .sent = {.brdno = kDriverBoard, .arg2 = sizeof(reply)},
                 .payload = {bytes_of(reply)}});
  driver.expect({.callback = Callback::kHbaAdapterAttributes, .sent = {.brdno = kDriverBoard}});
  driver.expect({.callback = Callback::kHbaPortAttributes, .sent = {.brdno = kDriverBoard}});
  driver.expect({.callback = Callback::kMboxSliCfgExtSup, .sent = {.brdno = kDriverBoard}});
}

void AdapterTest::expect_no_driver_info() {
  driver.expect({.callback = Callback::kGetTrelDfcInfo,
                 .sent = {.brdno = kDriverBoard, .arg2 = sizeof(DriverInfoReply)},
                 .driver_status = 0x0BAD0001});
}

std::string AdapterTest::driver_info_lines() {
  std::string lines;
  const auto add = [&](const char* function, int call, int result, const char* callback) {
    lines += call_line(function, call, callback) + ok_line(function, result, callback);
  };
  add("DFC_GetDrvInfo", 214, 218, "TREL_MGMT_GET_TRELDFC_INFO");
  add("GetAdapterAttributes", 62, 66, "TREL_MGMT_HBA_ADAPTERATTRIBUTES");
  add("GetAdapterPortAttributes", 118, 122, "TREL_MGMT_HBA_PORTATTRIBUTES");
  add("DFC_GetDrvInfo", 268, 272, "TREL_MGMT_MBOX_SLI_CFG_EXT_SUP");
  return lines;
}

std::string log_line(const std::string& function, int line, const std::string& message) {
  return "2023-11-14T22:13:20  " + right_aligned(function, 24) + ":" + right_aligned(std::to_string(line), 5) + " " + message +
         "\n";
}

std::string call_line(const std::string& function, int line, const std::string& callback) {
  return log_line(function, line, "call: " + callback + kIds);
}

std::string ok_line(const std::string& function, int line, const std::string& callback) {
  return log_line(function, line, "cmd ok:  " + right_aligned(callback, 28) + " brd[3]" + kIds);
}

std::string error_line(const std::string& function, int line, const std::string& callback, const std::string& statuses) {
  return log_line(function, line, "cmd err: " + right_aligned(callback, 28) + " brd[3] stat[" + statuses + "]" + kIds);
}

}  // namespace vaskdfc::test
