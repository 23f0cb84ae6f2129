#include "parameter_entry.h"

#include <algorithm>

#include "decode.h"
#include "driver_record.h"

namespace vaskdfc::tool {
namespace {

constexpr std::size_t kNameBytes = 32;
constexpr std::size_t kLeastOffset = 32;
constexpr std::size_t kMostOffset = 36;
constexpr std::size_t kInitialOffset = 40;
constexpr std::size_t kValueOffset = 44;
constexpr std::size_t kFlagsOffset = 48;
constexpr std::size_t kMeaningOffset = 52;

constexpr std::uint32_t kNeedsRestart = 0x1;
constexpr std::uint32_t kWaits = 0x2;

Cell word_cell(const std::optional<std::uint32_t>& word) { return word ? number_cell(*word) : absent(); }

}  // namespace

Parameter parse_parameter(std::uint32_t position, Bytes entry) {
  const std::uint32_t flags = word_at(entry, kFlagsOffset).value_or(0);
  return {.position = position,
          .name = text_of(part(entry, 0, kNameBytes)),
          .meaning = text_of(part(entry, kMeaningOffset)),
          .value = word_at(entry, kValueOffset),
          .initial = word_at(entry, kInitialOffset),
          .least = word_at(entry, kLeastOffset),
          .most = word_at(entry, kMostOffset),
          .needs_restart = (flags & kNeedsRestart) != 0,
          .waits = (flags & kWaits) != 0};
}

std::vector<Field> parameter_fields(const Parameter& parameter) {
  return {{"position", "Position", number_cell(parameter.position)},
          {"name", "Name", text_cell(parameter.name)},
          {"value", "Value", word_cell(parameter.value)},
          {"default", "Default", word_cell(parameter.initial)},
          {"minimum", "Minimum", word_cell(parameter.least)},
          {"maximum", "Maximum", word_cell(parameter.most)},
          {"needs_restart", "Needs restart", flag_cell(parameter.needs_restart)},
          {"waits", "Waits", flag_cell(parameter.waits)}};
}

Field meaning_field(const Parameter& parameter) { return {"meaning", "Meaning", text_cell(parameter.meaning)}; }

const Parameter* find_parameter(const std::vector<Parameter>& parameters, const std::string& name) {
  auto found = std::ranges::find(parameters, name, &Parameter::name);
  if (const auto position = parse_number(name); found == parameters.end() && position) {
    found = std::ranges::find(parameters, *position, &Parameter::position);
  }
  return found == parameters.end() ? nullptr : &*found;
}

}  // namespace vaskdfc::tool
