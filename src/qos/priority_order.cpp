#include "qos/priority_order.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>

#include "transport/staging_buffer.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

struct RuleCopies {
  fcp_prio_entry rules[DFC_FCP_PRIO_MOST_RULES];
  uint8_t specific_keys[DFC_FCP_PRIO_MOST_RULES];
};

using Key = uint8_t (fcp_prio_entry::*)[8];
constexpr Key kKeys[] = {&fcp_prio_entry::match1, &fcp_prio_entry::match2, &fcp_prio_entry::match3, &fcp_prio_entry::match4};

// How many keys stand before a rule's first wildcard: the more, the more specific the rule is. Without a branch, because rules come
// in any order and a processor would guess wrong at every other one.
uint8_t specific_keys(const fcp_prio_entry& rule) {
  constexpr uint64_t kWildcard = ~uint64_t{0};
  uint32_t wildcards = 1u << std::size(kKeys);
  for (std::size_t i = 0; i < std::size(kKeys); ++i) {
    const bool is_wildcard = std::bit_cast<uint64_t>(std::to_array(rule.*kKeys[i])) == kWildcard;
    wildcards |= (is_wildcard ? 1u : 0u) << i;
  }
  return static_cast<uint8_t>(std::countr_zero(wildcards));
}

}  // namespace

uint32_t vaskdfc::order_fcp_priority_list(dfc_fcp_prio_list& list) {
  if (list.count == 0) return DFC_OK;
  const StagingBuffer<RuleCopies> copies;
  if (!copies) return DFC_FAILED;

  std::copy_n(list.entries, list.count, copies->rules);

  uint32_t counts[std::size(kKeys) + 1] = {};
  for (uint32_t i = 0; i < list.count; ++i) {
    copies->specific_keys[i] = specific_keys(copies->rules[i]);
    ++counts[copies->specific_keys[i]];
  }
  // Where the next rule of each kind goes: behind all that are more specific.
  fcp_prio_entry* next[std::size(counts)];
  fcp_prio_entry* start = list.entries;
  for (std::size_t keys = std::size(counts); keys-- > 0; start += counts[keys]) next[keys] = start;

  // Backwards on purpose: drivers have always seen equally specific rules in this order.
  for (uint32_t i = list.count; i-- > 0;) *next[copies->specific_keys[i]]++ = copies->rules[i];
  return DFC_OK;
}
