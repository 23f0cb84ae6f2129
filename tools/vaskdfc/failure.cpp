#include "failure.h"

#include <fmt/format.h>
#include <vaskdfc/access.h>
#include <vaskdfc/fabric.h>
#include <vaskdfc/link.h>
#include <vaskdfc/loopback.h>
#include <vaskdfc/mailbox.h>
#include <vaskdfc/oas.h>
#include <vaskdfc/regions.h>
#include <vaskdfc/reset.h>
#include <vaskdfc/result.h>
#include <vaskdfc/vport.h>

#include <algorithm>
#include <array>
#include <utility>

#include "code_names.h"
#include "decode.h"

namespace vaskdfc::tool {
namespace {

using Name = std::pair<std::uint32_t, const char*>;

constexpr std::array kDfcNames{Name{DFC_OK, "DFC_OK"}, Name{DFC_FAILED, "DFC_FAILED"}, Name{DFC_UNSUPPORTED, "DFC_UNSUPPORTED"},
                               Name{DFC_TOO_SMALL, "DFC_TOO_SMALL"}, Name{DFC_NO_MEMORY, "DFC_NO_MEMORY"}};
// What these families name otherwise, or beside the library's own codes.
constexpr std::array kMailboxNames{Name{DFC_MBOX_GAVE_UP, "DFC_MBOX_GAVE_UP"}, Name{DFC_MBOX_NOT_TAKEN, "DFC_MBOX_NOT_TAKEN"},
                                   Name{DFC_MBOX_WRONG_KIND, "DFC_MBOX_WRONG_KIND"}};
constexpr std::array kDumpNames{
    Name{DFC_DUMP_UNKNOWN_REGION, "DFC_DUMP_UNKNOWN_REGION"}, Name{DFC_DUMP_COMPLETED_FFFD, "DFC_DUMP_COMPLETED_FFFD"},
    Name{DFC_DUMP_COMPLETED_FFF7, "DFC_DUMP_COMPLETED_FFF7"}, Name{DFC_DUMP_COMPLETED_FFF6, "DFC_DUMP_COMPLETED_FFF6"}};
constexpr std::array kRegionNames{Name{DFC_RECORD_NOT_FOUND, "DFC_RECORD_NOT_FOUND"},
                                  Name{DFC_REGION22_NO_IMAGE, "DFC_REGION22_NO_IMAGE"}};
constexpr std::array kHbaNames{Name{HBA_STATUS_OK, "HBA_STATUS_OK"},
                               Name{HBA_STATUS_ERROR, "HBA_STATUS_ERROR"},
                               Name{HBA_STATUS_ERROR_ILLEGAL_WWN, "HBA_STATUS_ERROR_ILLEGAL_WWN"},
                               Name{HBA_STATUS_ERROR_ILLEGAL_INDEX, "HBA_STATUS_ERROR_ILLEGAL_INDEX"},
                               Name{HBA_STATUS_ERROR_MORE_DATA, "HBA_STATUS_ERROR_MORE_DATA"},
                               Name{HBA_STATUS_ERROR_STALE_DATA, "HBA_STATUS_ERROR_STALE_DATA"}};
constexpr std::array kVportNames{Name{DFC_NO_SUCH_VPORT, "DFC_NO_SUCH_VPORT"}};
constexpr std::array kElsNames{Name{DFC_ELS_BAD000A, "DFC_ELS_BAD000A"}};
constexpr std::array kMgmtNames{Name{DFC_MGMT_FAILED, "DFC_MGMT_FAILED"}, Name{DFC_MGMT_BAD005A, "DFC_MGMT_BAD005A"},
                                Name{DFC_MGMT_COMMAND_BAD0021, "DFC_MGMT_COMMAND_BAD0021"},
                                Name{DFC_MGMT_RESPONSE_BAD0021, "DFC_MGMT_RESPONSE_BAD0021"},
                                Name{DFC_MGMT_TOO_LONG, "DFC_MGMT_TOO_LONG"}};
constexpr std::array kVpdNames{Name{DFC_VPD_BAD0084, "DFC_VPD_BAD0084"}, Name{DFC_VPD_FAILED, "DFC_VPD_FAILED"}};
constexpr std::array kAccessNames{Name{DFC_ACCESS_FAILED, "DFC_ACCESS_FAILED"}, Name{DFC_ACCESS_NOT_SLI3, "DFC_ACCESS_NOT_SLI3"}};
constexpr std::array kResetNames{Name{DFC_RESET_NO_SUCH_TYPE, "DFC_RESET_NO_SUCH_TYPE"}};
// The other way round than everywhere else.
constexpr std::array kInducedDumpNames{Name{DFC_DUMP_INDUCED, "DFC_DUMP_INDUCED"},
                                       Name{DFC_DUMP_NOT_INDUCED, "DFC_DUMP_NOT_INDUCED"}};
constexpr std::array kDumpRegionNames{Name{DFC_DUMP_REGION_BAD0014, "DFC_DUMP_REGION_BAD0014"},
                                      Name{DFC_DUMP_REGION_BAD0003, "DFC_DUMP_REGION_BAD0003"}};
constexpr std::array kLoopbackModeNames{Name{DFC_LOOPBACK_BAD0021, "DFC_LOOPBACK_BAD0021"},
                                        Name{DFC_LOOPBACK_NO_SUCH_MODE, "DFC_LOOPBACK_NO_SUCH_MODE"}};
constexpr std::array kLoopbackTestNames{Name{DFC_LOOPBACK_BAD0039, "DFC_LOOPBACK_BAD0039"},
                                        Name{DFC_LOOPBACK_BAD000A, "DFC_LOOPBACK_BAD000A"}};
constexpr std::array kLoopbackEndNames{Name{DFC_LOOPBACK_BAD0021, "DFC_LOOPBACK_BAD0021"}};
constexpr std::array kOasNames{Name{DFC_OAS_BAD0010, "DFC_OAS_BAD0010"},
                               Name{DFC_OAS_BAD000F, "DFC_OAS_BAD000F"},
                               Name{DFC_OAS_BAD0006, "DFC_OAS_BAD0006"},
                               Name{DFC_OAS_NO_NODES, "DFC_OAS_NO_NODES"},
                               Name{DFC_OAS_NO_REMOTE_PORT, "DFC_OAS_NO_REMOTE_PORT"},
                               Name{DFC_OAS_BAD0020, "DFC_OAS_BAD0020"},
                               Name{DFC_OAS_BAD0030, "DFC_OAS_BAD0030"},
                               Name{DFC_OAS_BAD002B, "DFC_OAS_BAD002B"}};

constexpr const char* kNeverWritten = "the adapter has nothing in this region yet; it may never have been written";

constexpr std::array kHbaHints{
    Name{HBA_STATUS_ERROR_ILLEGAL_WWN, "no port has this WWN; \"vaskdfc ports ADAPTER --discovered\" shows those that there are"},
    Name{HBA_STATUS_ERROR_ILLEGAL_INDEX, "the list of ports ends before this position; positions count from 0"},
    Name{HBA_STATUS_ERROR_STALE_DATA, "the ports keep changing: try again"}};

constexpr std::array kMailboxHints{
    Name{DFC_MBOX_NOT_TAKEN, "the driver does not take this mailbox"},
    Name{DFC_MBOX_WRONG_KIND, "the adapter takes mailboxes of another kind; \"vaskdfc show ADAPTER\" tells its SLI mode"}};
constexpr std::array kDumpHints{Name{DFC_DUMP_UNKNOWN_REGION, "\"vaskdfc region list ADAPTER\" shows the regions that there are"},
                                Name{DFC_DUMP_COMPLETED_FFFD, kNeverWritten}, Name{DFC_DUMP_COMPLETED_FFF7, kNeverWritten},
                                Name{DFC_DUMP_COMPLETED_FFF6, kNeverWritten}};
constexpr std::array kRegionHints{
    Name{DFC_UNSUPPORTED, "not offered by this adapter or its driver; \"vaskdfc show ADAPTER\" tells its SLI mode and features"},
    Name{DFC_RECORD_NOT_FOUND, "\"vaskdfc region init ADAPTER 23\" writes an image that has the record"}};

constexpr std::array kVportHints{
    Name{DFC_NO_SUCH_VPORT, "no virtual port has this WWN; \"vaskdfc npiv list ADAPTER\" shows those that there are"}};

constexpr const char* kOlderOnly = "only adapters of SLI mode 3 or below offer this; \"vaskdfc show ADAPTER\" tells the SLI mode";
constexpr std::array kVpdHints{
    Name{DFC_VPD_BAD0084, "the driver has nothing under this selector; \"vaskdfc vpd ADAPTER\" shows what there is"}};
constexpr std::array kAccessHints{Name{DFC_ACCESS_NOT_SLI3, kOlderOnly}, Name{DFC_UNSUPPORTED, kOlderOnly}};
constexpr std::array kResetHints{Name{DFC_RESET_NO_SUCH_TYPE, "the driver offers no such reset; types 1 and 2 are always there"}};
constexpr std::array kDumpRegionHints{
    Name{DFC_UNSUPPORTED, "the driver has no such dump region, or the adapter is not of SLI mode 3 or below"},
    Name{DFC_DUMP_REGION_BAD0014, "there may be no dump yet; \"vaskdfc dump induce ADAPTER\" makes one"}};
constexpr std::array kLoopbackModeHints{
    Name{DFC_LOOPBACK_BAD0021, "the port may be in another loopback mode; \"vaskdfc loopback end ADAPTER\" ends it"}};
constexpr std::array kLoopbackTestHints{
    Name{DFC_LOOPBACK_BAD000A, "nothing came back: external loopback needs a loopback plug in the port"}};
constexpr std::array kLoopbackEndHints{Name{DFC_LOOPBACK_BAD0021, "the port was in no loopback mode"}};
constexpr std::array kOasHints{
    Name{DFC_OAS_BAD0010, "the initiator is no port of the adapter; \"vaskdfc npiv list ADAPTER\" shows its virtual ports"},
    Name{DFC_OAS_BAD000F, "the port does not know the target; \"vaskdfc nodes ADAPTER\" shows whom it knows"},
    Name{DFC_OAS_BAD0006, "the driver has no room for another rule; remove one"},
    Name{DFC_OAS_NO_NODES, "the rule stands, but nobody knows whether the port knows the target"},
    Name{DFC_OAS_NO_REMOTE_PORT, "the rule stands and waits: the port does not know the target yet"},
    Name{DFC_OAS_BAD0020, "not offered by this adapter or its driver"},
    Name{DFC_OAS_BAD0030, "the driver has OAS switched off; \"vaskdfc params list ADAPTER\" may show the parameter"},
    Name{DFC_OAS_BAD002B, "the driver knows no such rule"}};

std::string hint_for_result(Results family, std::uint32_t result) {
  switch (family) {
    case Results::kHba: return name_in(kHbaHints, result);
    case Results::kMailbox: return name_in(kMailboxHints, result);
    case Results::kDump: return name_in(kDumpHints, result);
    case Results::kRegion: return name_in(kRegionHints, result);
    case Results::kVport: return name_in(kVportHints, result);
    case Results::kVpd: return name_in(kVpdHints, result);
    case Results::kAccess: return name_in(kAccessHints, result);
    case Results::kReset: return name_in(kResetHints, result);
    case Results::kDumpRegion: return name_in(kDumpRegionHints, result);
    case Results::kLoopbackMode: return name_in(kLoopbackModeHints, result);
    case Results::kLoopbackTest: return name_in(kLoopbackTestHints, result);
    case Results::kLoopbackEnd: return name_in(kLoopbackEndHints, result);
    case Results::kOas: return name_in(kOasHints, result);
    default: return "";
  }
}

// What most often helps, by the result and by the statuses of the call that failed.
std::string hint_for(const Failure& failure) {
  std::string hint = hint_for_result(failure.results, failure.result.value_or(DFC_OK));
  if (!hint.empty()) return hint;
  if (!failure.call) return "";
  if (failure.call->platform_status != 0) return "the platform refused the call: check that the driver is still loaded";
  if (failure.call->header.status == kDriverBusy) return "the driver is busy: try again";
  return "the driver's own log may say more; run again with -v to see every driver call";
}

// What is known of a failure, in the order in which it is reported.
Section section_of(const Failure& failure) {
  const auto number_or_null = [](const std::optional<std::uint32_t>& number) { return number ? number_cell(*number) : absent(); };
  // Messages quote what was typed, which may be no text at all.
  const auto text_or_null = [](const std::string& text) { return text.empty() ? absent() : text_cell(text_of(text)); };
  const auto status = [&](auto word) { return failure.call ? hex_cell(word(*failure.call)) : absent(); };
  const std::string name = failure.result ? result_name(failure.results, *failure.result) : "";
  return record_section(
      "error", "Error",
      {{"message", "message", text_or_null(failure.message)},
       {"adapter", "adapter", number_or_null(failure.adapter)},
       {"operation", "operation", text_or_null(failure.operation)},
       {"platform_status", "platform status", status([](const DriverCall& call) { return call.platform_status; })},
       {"driver_status", "driver status", status([](const DriverCall& call) { return call.header.status; })},
       {"result", "result", number_or_null(failure.result)},
       {"result_name", "result name", text_or_null(name)},
       {"hint", "hint", text_or_null(failure.hint)}});
}

}  // namespace

std::string result_name(Results family, std::uint32_t result) {
  const auto own_or_common = [&](const auto& names) {
    const std::string own = name_in(names, result);
    return own.empty() ? std::string(name_in(kDfcNames, result)) : own;
  };
  switch (family) {
    case Results::kStatus: return "";
    case Results::kDfc: return name_in(kDfcNames, result);
    case Results::kHba: return name_in(kHbaNames, result);
    case Results::kMailbox: return own_or_common(kMailboxNames);
    case Results::kDump: return own_or_common(kDumpNames);
    case Results::kRegion: return own_or_common(kRegionNames);
    case Results::kVport: return own_or_common(kVportNames);
    case Results::kEls: return own_or_common(kElsNames);
    case Results::kMgmt: return own_or_common(kMgmtNames);
    case Results::kVpd: return name_in(kVpdNames, result);
    case Results::kAccess: return own_or_common(kAccessNames);
    case Results::kReset: return own_or_common(kResetNames);
    case Results::kInducedDump: return own_or_common(kInducedDumpNames);
    case Results::kDumpRegion: return own_or_common(kDumpRegionNames);
    case Results::kLoopbackMode: return own_or_common(kLoopbackModeNames);
    case Results::kLoopbackTest: return own_or_common(kLoopbackTestNames);
    case Results::kLoopbackEnd: return own_or_common(kLoopbackEndNames);
    case Results::kOas: return own_or_common(kOasNames);
  }
  return "";
}

Failure plain_failure(Exit exit, std::string message, std::string hint) {
  Failure failure;
  failure.message = std::move(message);
  failure.hint = std::move(hint);
  failure.exit = exit;
  return failure;
}

Failure usage_failure(std::string message, std::string hint) {
  return plain_failure(Exit::kUsage, std::move(message), std::move(hint));
}

Failure operation_failure(std::string message, std::optional<std::uint32_t> adapter, std::string operation, Results results,
                          std::uint32_t result) {
  Failure failure;
  failure.message = std::move(message);
  failure.adapter = adapter;
  failure.operation = std::move(operation);
  failure.call = last_failed_driver_call() ? last_failed_driver_call() : last_driver_call();
  failure.results = results;
  failure.result = result;
  failure.hint = hint_for(failure);
  return failure;
}

Failure with_hint(Failure failure, std::string hint) {
  failure.hint = std::move(hint);
  return failure;
}

std::string render_failure(const Failure& failure, Form form) {
  const Section section = section_of(failure);
  const Record& fields = section.records.front();
  if (form == Form::kJson) return Json{{"schema", 1}, {"error", object_of(section, fields)}}.dump() + "\n";

  std::string text = fmt::format("vaskdfc: {}\n", fields.front().text);
  for (std::size_t i = 1; i < fields.size(); ++i) {
    if (!fields[i].value.is_null()) text += fmt::format("  {}: {}\n", section.columns[i].title, fields[i].text);
  }
  return text;
}

}  // namespace vaskdfc::tool
