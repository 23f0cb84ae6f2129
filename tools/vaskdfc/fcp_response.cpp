#include "fcp_response.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>

#include "decode.h"

namespace vaskdfc::tool {
namespace {

constexpr std::size_t kFlags = 10;
constexpr std::size_t kStatus = 11;
constexpr std::size_t kResidue = 12;
constexpr std::size_t kResponseInfoLength = 20;
constexpr std::size_t kHead = 24;

constexpr std::uint8_t kHasResponseInfo = 0x01;
constexpr std::uint8_t kHasSense = 0x02;
constexpr std::uint8_t kTooMuch = 0x04;
constexpr std::uint8_t kTooLittle = 0x08;

constexpr std::uint8_t kGood = 0x00;
constexpr std::uint8_t kCheckCondition = 0x02;
constexpr std::uint8_t kConditionMet = 0x04;

constexpr std::array<std::pair<std::uint8_t, const char*>, 8> kStatusNames{{{kGood, "GOOD"},
                                                                            {kCheckCondition, "CHECK CONDITION"},
                                                                            {kConditionMet, "CONDITION MET"},
                                                                            {0x08, "BUSY"},
                                                                            {0x18, "RESERVATION CONFLICT"},
                                                                            {0x28, "TASK SET FULL"},
                                                                            {0x30, "ACA ACTIVE"},
                                                                            {0x40, "TASK ABORTED"}}};

std::string status_text(std::uint8_t status) {
  const auto found = std::ranges::find(kStatusNames, status, [](const auto& entry) { return entry.first; });
  return fmt::format("{} ({:02x})", found == kStatusNames.end() ? "unknown" : found->second, status);
}

std::uint8_t flags_of(Bytes response) { return number_at<std::uint8_t>(response, kFlags).value_or(0); }

const char* moved_text(std::uint8_t flags) {
  if ((flags & kTooMuch) != 0) return "more than announced";
  return (flags & kTooLittle) != 0 ? "less than announced" : "as announced";
}

std::size_t response_info_bytes(Bytes response) {
  return (flags_of(response) & kHasResponseInfo) != 0 ? number_at(response, kResponseInfoLength).value_or(0) : 0;
}

}  // namespace

Bytes sense_in(Bytes response) {
  if ((flags_of(response) & kHasSense) == 0) return {};
  return part(part(response, kHead), response_info_bytes(response));
}

std::vector<Field> response_fields(Bytes response) {
  const auto status = number_at<std::uint8_t>(response, kStatus);
  const auto residue = number_at(response, kResidue);
  return {{"status", "SCSI status", status ? text_cell(status_text(*status)) : absent()},
          {"data_moved", "Data moved", residue ? text_cell(moved_text(flags_of(response))) : absent()},
          {"residue", "Residue", residue ? number_cell(*residue, "bytes") : absent()},
          {"response", "Response", hex_bytes_cell(response)}};
}

std::string refusal_text(Bytes response) {
  const auto status = number_at<std::uint8_t>(response, kStatus);
  if (!status) return "sent no whole response";
  if (*status == kGood || *status == kConditionMet) return "";
  if (*status == kCheckCondition && !sense_in(response).empty()) return "";  // the sense says how it ended
  return fmt::format("ended with status {}", status_text(*status));
}

}  // namespace vaskdfc::tool
