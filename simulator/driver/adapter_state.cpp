#include "driver/adapter_state.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>
#include <nlohmann/json.hpp>

#include "driver/state_store.h"

namespace simulator {
namespace {

using nlohmann::json;

constexpr std::size_t kEventQueue = 64;

constexpr std::array<std::pair<std::string_view, DiagnosticState>, 3> kStateNames{{
    {"online", DiagnosticState::kOnline},
    {"offline", DiagnosticState::kOffline},
    {"diagnostic", DiagnosticState::kDiagnostic},
}};

constexpr std::array<std::pair<std::string_view, LoopbackMode>, 3> kLoopbackNames{{
    {"none", LoopbackMode::kNone},
    {"internal", LoopbackMode::kInternal},
    {"external", LoopbackMode::kExternal},
}};

template <typename Value, std::size_t N>
std::string_view name_of(const std::array<std::pair<std::string_view, Value>, N>& names, Value value) {
  return std::ranges::find(names, value, &std::pair<std::string_view, Value>::second)->first;
}

json document_of(const AdapterState& state) {
  json events = json::array();
  for (const TestEvent& event : state.events) events.push_back({event.first, event.second});
  return {{"diagnostic_state", name_of(kStateNames, state.diagnostic_state)},
          {"loopback", name_of(kLoopbackNames, state.loopback)},
          {"not_ready_reports", state.not_ready_reports},
          {"generation", state.generation},
          {"events_raised", state.events_raised},
          {"events", events}};
}

struct Reader {
  const std::string& file;

  [[noreturn]] void damaged(std::string_view where, std::string_view wanted) const {
    throw StateError::damaged(file, where, wanted);
  }

  const json& member(const json& object, const char* key) const {
    if (!object.contains(key)) damaged(key, "a value");
    return object[key];
  }

  // What another version has stored would be lost with the next change.
  void check_members(const json& object) const {
    const json known = document_of({});
    for (const auto& [key, value] : object.items()) {
      if (!known.contains(key)) damaged(key, "nothing of this name");
    }
  }

  std::uint32_t word(const json& value, const char* where) const {
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > std::numeric_limits<std::uint32_t>::max()) {
      damaged(where, "an integer from 0 to 4294967295");
    }
    return value.get<std::uint32_t>();
  }

  template <typename Value>
  Value named(const std::array<std::pair<std::string_view, Value>, 3>& names, const json& value, const char* where) const {
    const auto found = std::ranges::find_if(names, [&](const auto& one) { return value == one.first; });
    if (found != names.end()) return found->second;
    damaged(where, fmt::format("\"{}\", \"{}\" or \"{}\"", names[0].first, names[1].first, names[2].first));
  }

  DiagnosticState diagnostic_state(const json& value) const { return named(kStateNames, value, "diagnostic_state"); }

  // Older states say nothing about it.
  LoopbackMode loopback(const json& document) const {
    return named(kLoopbackNames, document.value("loopback", json("none")), "loopback");
  }

  std::deque<TestEvent> events(const json& values) const {
    if (!values.is_array() || values.size() > kEventQueue)
      damaged("events", fmt::format("a list of at most {} events", kEventQueue));
    std::deque<TestEvent> result;
    for (const json& value : values) {
      if (!value.is_array() || value.size() != 2) damaged("events", "pairs of test values");
      result.push_back({word(value[0], "events"), word(value[1], "events")});
    }
    return result;
  }
};

}  // namespace

void AdapterState::raise(TestEvent event) {
  ++events_raised;
  if (events.size() == kEventQueue) events.pop_front();
  events.push_back(event);
}

std::string write_state(const AdapterState& state) { return document_of(state).dump() + "\n"; }

AdapterState read_state(const std::string& name, std::string_view text) {
  const Reader reader{name};
  const json document = json::parse(text, nullptr, false);
  if (!document.is_object()) reader.damaged("the whole file", "a JSON object");
  reader.check_members(document);
  return {
      .diagnostic_state = reader.diagnostic_state(reader.member(document, "diagnostic_state")),
      .loopback = reader.loopback(document),
      .not_ready_reports = reader.word(reader.member(document, "not_ready_reports"), "not_ready_reports"),
      .generation = reader.word(reader.member(document, "generation"), "generation"),
      .events_raised = reader.word(reader.member(document, "events_raised"), "events_raised"),
      .events = reader.events(reader.member(document, "events")),
  };
}

}  // namespace simulator
