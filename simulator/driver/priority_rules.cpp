#include "driver/priority_rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "driver/stored_name.h"
#include "scsi/target.h"

namespace simulator {
namespace {

using Content = PriorityRules::Content;

std::string text_of(const Content& content) { return {reinterpret_cast<const char*>(&content), sizeof(content)}; }

// The text may be of any length.
Content content_of(std::string_view text) {
  Content content{};
  std::memcpy(&content, text.data(), std::min(text.size(), sizeof(content)));
  return content;
}

void put_name(const std::optional<HbaWwn>& name, std::uint8_t (&key)[8]) {
  if (name) std::ranges::copy(name->wwn, key);
}

// A key that the scenario leaves out is a wildcard.
fcp_prio_entry entry_of(const scenario::PriorityRule& rule) {
  fcp_prio_entry entry;
  std::memset(&entry, 0xFF, sizeof(entry));
  put_name(rule.initiator, entry.match1);
  put_name(rule.target, entry.match2);
  if (rule.lun) std::ranges::copy(scsi::lun_bytes(*rule.lun), entry.match3);
  put_name(rule.application, entry.match4);
  entry.prio = rule.priority;
  return entry;
}

Content initial(const scenario::Adapter& card) {
  Content content{.enabled = card.priority.enabled ? 1u : 0u, .list = {}};
  content.list.count = static_cast<std::uint32_t>(card.priority.rules.size());
  std::ranges::transform(card.priority.rules, content.list.entries, entry_of);
  return content;
}

KeptBytes::Form form() {
  return {.holds =
              [](std::string_view text) {
                return text.size() == sizeof(Content) && content_of(text).list.count <= PriorityRules::kMostRules;
              },
          .description = fmt::format("{} bytes with at most {} rules", sizeof(Content), PriorityRules::kMostRules)};
}

}  // namespace

PriorityRules::PriorityRules(const scenario::Adapter& card, StateStore& store)
    : kept_(store, stored_name("priority", card, "bin"), text_of(initial(card)), form()) {}

PriorityRules::Content PriorityRules::load() const { return content_of(kept_.load()); }

void PriorityRules::enable(std::uint32_t flag) {
  kept_.update([&](std::string& kept) {
    Content content = content_of(kept);
    content.enabled = flag;
    kept = text_of(content);
  });
}

void PriorityRules::replace(const dfc_fcp_prio_list& list) {
  kept_.update([&](std::string& kept) {
    Content content{.enabled = content_of(kept).enabled, .list = {}};
    content.list.count = list.count;
    std::copy_n(list.entries, list.count, content.list.entries);
    kept = text_of(content);
  });
}

}  // namespace simulator
