#include "qos/priority_order.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "transport/staging_buffer.h"
#include "vaskdfc/result.h"

using namespace vaskdfc;

namespace {

struct RuleCopies {
  fcp_prio_entry rules[DFC_FCP_PRIO_MOST_RULES];
};

using Key = uint8_t (fcp_prio_entry::*)[8];
constexpr Key kKeys[] = {&fcp_prio_entry::match1, &fcp_prio_entry::match2, &fcp_prio_entry::match3, &fcp_prio_entry::match4};

// How many keys stand before a rule's first wildcard: the more, the more specific the rule is.
std::size_t specific_keys(const fcp_prio_entry& rule) {
  const auto is_wildcard = [&](Key key) { return std::ranges::all_of(rule.*key, [](uint8_t byte) { return byte == 0xFF; }); };
  return static_cast<std::size_t>(std::ranges::find_if(kKeys, is_wildcard) - std::begin(kKeys));
}

}  // namespace

uint32_t vaskdfc::order_fcp_priority_list(dfc_fcp_prio_list& list) {
  if (list.count == 0) return DFC_OK;
  const StagingBuffer<RuleCopies> copies;
  if (!copies) return DFC_FAILED;

  const std::span rules(copies->rules, list.count);
  std::copy_n(list.entries, list.count, rules.begin());
  fcp_prio_entry* next = list.entries;
  for (std::size_t keys = std::size(kKeys) + 1; keys-- > 0;) {
    // Backwards on purpose: drivers have always seen equally specific rules in this order.
    next = std::copy_if(rules.rbegin(), rules.rend(), next, [=](const auto& rule) { return specific_keys(rule) == keys; });
  }
  return DFC_OK;
}
