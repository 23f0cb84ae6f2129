#include "failure.h"

#include <fmt/format.h>
#include <vaskdfc/result.h>

#include <algorithm>
#include <array>
#include <utility>

#include "decode.h"

namespace vaskdfc::tool {
namespace {

using Name = std::pair<std::uint32_t, const char*>;

constexpr std::array kDfcNames{Name{DFC_OK, "DFC_OK"}, Name{DFC_FAILED, "DFC_FAILED"}, Name{DFC_UNSUPPORTED, "DFC_UNSUPPORTED"}};
constexpr std::array kHbaNames{Name{HBA_STATUS_OK, "HBA_STATUS_OK"}, Name{HBA_STATUS_ERROR, "HBA_STATUS_ERROR"},
                               Name{HBA_STATUS_ERROR_ILLEGAL_WWN, "HBA_STATUS_ERROR_ILLEGAL_WWN"},
                               Name{HBA_STATUS_ERROR_ILLEGAL_INDEX, "HBA_STATUS_ERROR_ILLEGAL_INDEX"},
                               Name{HBA_STATUS_ERROR_STALE_DATA, "HBA_STATUS_ERROR_STALE_DATA"}};

std::string name_in(const auto& names, std::uint32_t result) {
  const auto found = std::ranges::find(names, result, &Name::first);
  return found == names.end() ? "" : found->second;
}

constexpr std::array kHbaHints{
    Name{HBA_STATUS_ERROR_ILLEGAL_WWN, "no port has this WWN; \"vaskdfc ports ADAPTER --discovered\" shows those that there are"},
    Name{HBA_STATUS_ERROR_ILLEGAL_INDEX, "the list of ports ends before this position; positions count from 0"},
    Name{HBA_STATUS_ERROR_STALE_DATA, "the ports keep changing: try again"}};

// What most often helps, by the result and by the statuses of the call that failed.
std::string hint_for(const Failure& failure) {
  constexpr std::uint32_t kBusy = 0x0BAD0039;
  std::string hint = failure.results == Results::kHba ? name_in(kHbaHints, failure.result.value_or(HBA_STATUS_OK)) : "";
  if (!hint.empty()) return hint;
  if (!failure.call) return "";
  if (failure.call->platform_status != 0) return "the platform refused the call: check that the driver is still loaded";
  if (failure.call->header.status == kBusy) return "the driver is busy: try again";
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
  switch (family) {
    case Results::kStatus: return "";
    case Results::kDfc: return name_in(kDfcNames, result);
    case Results::kHba: return name_in(kHbaNames, result);
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
