#include "driver/parameters.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "driver/stored_name.h"

namespace simulator {
namespace {

using nlohmann::json;

std::string text_of(const Parameters::Changes& changes) {
  return json{{"values", changes.values}, {"pending", changes.pending}}.dump() + "\n";
}

bool fits(const scenario::Parameter& parameter, const json& value) {
  return value.is_number_unsigned() && value >= parameter.minimum && value <= parameter.maximum;
}

}  // namespace

Parameters::Parameters(const scenario::Adapter& card, StateStore& store)
    : card_(card), store_(store), name_(stored_name("parameters", card, "json")) {
  changes();
}

Parameters::Changes Parameters::parse(const std::optional<std::string>& text) const {
  Changes result;
  if (!text) return result;
  const json document = json::parse(*text, nullptr, false);
  const auto damaged = [&](std::string_view where, std::string_view wanted) {
    return StateError::damaged(store_.describe(name_), where, wanted);
  };
  if (!document.is_object()) throw damaged("the whole file", "a JSON object");
  for (const auto& [key, value] : document.items()) {
    if (key != "values" && key != "pending") throw damaged(key, "nothing of this name");
  }
  const json values = document.value("values", json());
  if (!values.is_object()) throw damaged("values", "an object of parameters");
  for (const auto& [name, value] : values.items()) {
    const scenario::Parameter* const parameter = scenario::find_parameter(card_.sli_mode, name);
    if (parameter == nullptr || !fits(*parameter, value)) throw damaged("values", "parameters of the adapter within their ranges");
    result.values[name] = value;
  }
  const json pending = document.value("pending", json());
  if (!pending.is_array()) throw damaged("pending", "a list of names");
  for (const json& name : pending) {
    if (!name.is_string() || !values.contains(name)) throw damaged("pending", "names of values");
    result.pending.insert(name.get<std::string>());
  }
  return result;
}

Parameters::Changes Parameters::changes() const { return parse(store_.load(name_)); }

std::uint32_t Parameters::value_in(const Changes& changes, const scenario::Parameter& parameter) const {
  if (const auto found = changes.values.find(parameter.name); found != changes.values.end()) return found->second;
  if (const auto found = card_.parameters.find(parameter.name); found != card_.parameters.end()) return found->second;
  return parameter.initial;
}

std::uint32_t Parameters::value(std::string_view name) const {
  return value_in(changes(), *scenario::find_parameter(card_.sli_mode, name));
}

void Parameters::set(const scenario::Parameter& parameter, std::uint32_t value) {
  store_.update(name_, [&](const std::optional<std::string>& present) {
    Changes changes = parse(present);
    changes.values[std::string(parameter.name)] = value;
    if (parameter.needs_restart) changes.pending.emplace(parameter.name);
    return text_of(changes);
  });
}

void Parameters::restart() {
  if (changes().pending.empty()) return;
  store_.update(name_, [&](const std::optional<std::string>& present) {
    Changes changes = parse(present);
    changes.pending.clear();
    return text_of(changes);
  });
}

}  // namespace simulator
