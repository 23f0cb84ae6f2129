// OAS: rules for single logical units.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <span>

#include "transport/call_frame.h"
#include "transport/staging_buffer.h"
#include "transport/status_map.h"
#include "vaskdfc/oas.h"
#include "vaskdfc/result.h"
#include "vaskdfc/vport.h"

using namespace vaskdfc;

namespace {

// All three log other names than their callbacks' own on one of their lines; log readers match these names.
constexpr CallSite kVersion{
    .function = "DFC_SetOASLun", .callback = Callback::kOasVer, .lines = {92, 96}, .result_name = "TREL_MGMT_OAS_VERSION"};
constexpr CallSite kSetRule{.function = "DFC_SetOASLun",
                            .callback = Callback::kOasSetRule,
                            .lines = {138, 142},
                            .call_name = facts_of(Callback::kOasGet).name,
                            .result_name = facts_of(Callback::kOasSetRule).name};
constexpr CallSite kList{
    .function = "DFC_GetOASLunList", .callback = Callback::kOasGet, .lines = {226, 230}, .result_name = "TREL_MGMT_OAS_GET_LIST"};

// Results of setting a rule; after DFC_OK the remote port remains to be confirmed.
constexpr StatusMap kSetResults{{{0, DFC_OK},
                                 {0xBAD0100, DFC_OK},
                                 {0xBAD0006, DFC_OAS_BAD0006},
                                 {0xBAD0020, DFC_OAS_BAD0020},
                                 {0xBAD0030, DFC_OAS_BAD0030},
                                 {0xBAD002B, DFC_OAS_BAD002B},
                                 {0xBAD002C, DFC_OAS_BAD002B}},
                                DFC_FAILED};
static_assert(kSetResults(0xBAD0006) == 16 && kSetResults(0xBAD0020) == 32 && kSetResults(0xBAD0030) == 33);
static_assert(kSetResults(0xBAD002B) == 34 && kSetResults(0xBAD002C) == 34 && kSetResults(0xBAD0100) == 0 && kSetResults(1) == 1);

constexpr StatusMap kListFailures{
    {{0xBAD0010, DFC_OAS_BAD0010}, {0xBAD000F, DFC_OAS_BAD000F}, {0xBAD0020, DFC_OAS_BAD0020}, {0xBAD0030, DFC_OAS_BAD0030}},
    DFC_FAILED};
static_assert(kListFailures(0xBAD0010) == 5 && kListFailures(0xBAD000F) == 15);
static_assert(kListFailures(0xBAD0020) == 32 && kListFailures(0xBAD0030) == 33 && kListFailures(1) == 1);

// The header of a callback of this family: these carry their own number as well.
template <const CallSite& kSite>
dfc_mgmt_hdr numbered_header(uint32_t board) {
  auto header = header_for(board);
  header.arg6 = static_cast<uint32_t>(kSite.callback);
  return header;
}

// The bytes of a WWN as one number, so that its digits are theirs.
uint64_t number_of(const HbaWwn& wwn) {
  uint64_t number = 0;
  for (const uint8_t byte : wwn.wwn) number = number << 8 | byte;
  return number;
}

void write_key(OasRuleKey& key, uint32_t version, const HbaWwn& local_port, const HbaWwn& remote_port, uint64_t lun) {
  // Deliberate: a version above 0 is written as 0.
  const uint32_t written = static_cast<int32_t>(version) > 0 ? 0 : version;
  std::snprintf(key.text, sizeof(key.text), "%02" PRIx32 "%016" PRIx64 "%016" PRIx64 "%016" PRIx64, written, number_of(local_port),
                number_of(remote_port), lun);
}

// Whether the local port knows the remote port.
uint32_t confirm_remote_port(uint32_t board, const HbaWwn& local_port, const HbaWwn& remote_port) {
  constexpr uint32_t kRoom = 64;
  // A driver may report more nodes than were asked for, as many as a reply holds.
  const auto nodes = StagingBuffer<NodeListReply>::cleared();
  if (!nodes) return DFC_OAS_NO_NODES;
  nodes->count = kRoom;
  if (DFC_GetAllNodeInfoByWWN(board, &local_port, reinterpret_cast<dfc_node_list*>(&*nodes)) != DFC_OK) return DFC_OAS_NO_NODES;

  const std::span listed(nodes->entries, std::min<std::size_t>(nodes->count, std::size(nodes->entries)));
  const auto is_remote_port = [&](const dfc_node_entry& node) {
    return std::memcmp(node.bytes + kNodePortWwn, remote_port.wwn, sizeof(remote_port)) == 0;
  };
  return std::ranges::any_of(listed, is_remote_port) ? DFC_OK : DFC_OAS_NO_REMOTE_PORT;
}

void convert(const OasRuleRecord& rule, oas_lun_entry& entry) {
  std::ranges::fill(entry.lun, 0);
  entry.lun[1] = rule.word_16.bytes[0];
  entry.word_16 = rule.word_16;
  entry.word_20 = rule.word_20;
  entry.flag_bit_1 = rule.flags >> 1 & 1;
  entry.flag_bit_0 = rule.flags & 1;
  std::ranges::copy(rule.bytes_0, entry.bytes_0);
}

}  // namespace

uint32_t DFC_SetOASLun(uint32_t board, const HbaWwn* local_port, const HbaWwn* remote_port, uint32_t lun_low, uint32_t lun_high,
                       uint32_t /*unused*/, uint8_t enable) {
  auto query = numbered_header<kVersion>(board);
  const Outcome version = invoke<kVersion>(board, query);
  // A driver that cannot be asked is not one that refuses: the rule itself decides.
  if (version.platform == 0 && version.driver != 0) return DFC_OAS_BAD0020;

  const auto key = StagingBuffer<OasRuleKey>::cleared();
  if (!key) return DFC_OAS_BAD0006;
  if (enable > 1) return DFC_FAILED;
  write_key(*key, query.arg4, *local_port, *remote_port, uint64_t{lun_high} << 32 | lun_low);
  auto header = numbered_header<kSetRule>(board);
  header.arg5 = enable == 1 ? 1 : 2;
  const Outcome outcome = invoke<kSetRule>(board, header, *key);
  if (outcome.platform != 0) return DFC_FAILED;
  if (const uint32_t result = kSetResults(outcome.driver); result != DFC_OK) return result;
  return confirm_remote_port(board, *local_port, *remote_port);
}

uint32_t DFC_GetOASLunList(uint32_t board, const HbaWwn* local_port, const HbaWwn* remote_port, uint32_t /*unused*/,
                           dfc_oas_lun_list* list) {
  if (list == nullptr) return DFC_TOO_SMALL;
  const auto reply = StagingBuffer<OasListReply>::cleared();
  if (!reply) return DFC_FAILED;
  auto header = numbered_header<kList>(board);
  const Outcome outcome = invoke<kList>(board, header, *local_port, *remote_port, *reply);
  if (outcome.platform != 0) return outcome.platform == DFC_TOO_SMALL ? DFC_TOO_SMALL : DFC_FAILED;
  if (outcome.driver != 0) return kListFailures(outcome.driver);

  const uint32_t room = list->numEntries;
  const auto copied = std::min({std::size_t{room}, std::size_t{header.arg3}, std::size(reply->rules)});
  for (std::size_t i = 0; i < copied; ++i) convert(reply->rules[i], list->entries[i]);
  list->numEntries = header.arg3;
  return room < header.arg3 ? DFC_TOO_SMALL : DFC_OK;
}
