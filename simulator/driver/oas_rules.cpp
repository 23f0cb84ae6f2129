#include "driver/oas_rules.h"

#include <fmt/format.h>

#include <cstring>

#include "driver/stored_name.h"

namespace simulator {
namespace {

using Rule = OasRules::Rule;
static_assert(sizeof(Rule) == 20 && std::is_trivially_copyable_v<Rule>);

std::string text_of(const Rule& rule) { return {reinterpret_cast<const char*>(&rule), sizeof(rule)}; }

// Where a rule stands; the end if it is not there.
std::size_t place_of(const Rule& rule, std::string_view kept) {
  std::size_t place = 0;
  while (place < kept.size() && kept.substr(place, sizeof(Rule)) != text_of(rule)) place += sizeof(Rule);
  return place;
}

KeptBytes::Form form() {
  return {.holds =
              [](std::string_view text) {
                return text.size() % sizeof(Rule) == 0 && text.size() <= scenario::kMostOasRules * sizeof(Rule);
              },
          .description = fmt::format("at most {} rules of {} bytes", scenario::kMostOasRules, sizeof(Rule))};
}

std::string initial(const scenario::Adapter& card) {
  std::string text;
  for (const Rule& rule : card.oas_rules) text += text_of(rule);
  return text;
}

}  // namespace

OasRules::OasRules(const scenario::Adapter& card, StateStore& store)
    : kept_(store, stored_name("oas", card, "bin"), initial(card), form()) {}

std::vector<Rule> OasRules::load() const {
  const std::string text = kept_.load();
  std::vector<Rule> rules(text.size() / sizeof(Rule));
  std::memcpy(rules.data(), text.data(), text.size());
  return rules;
}

bool OasRules::add(const Rule& rule) {
  bool is_kept = false;
  kept_.update([&](std::string& kept) {
    const bool is_there = place_of(rule, kept) < kept.size();
    is_kept = is_there || kept.size() < scenario::kMostOasRules * sizeof(Rule);
    if (is_kept && !is_there) kept += text_of(rule);
  });
  return is_kept;
}

bool OasRules::remove(const Rule& rule) {
  bool was_there = false;
  kept_.update([&](std::string& kept) {
    const std::size_t place = place_of(rule, kept);
    was_there = place < kept.size();
    if (was_there) kept.erase(place, sizeof(Rule));
  });
  return was_there;
}

}  // namespace simulator
