// What a typed table of driver callbacks is made of: rows that name a callback's number, its name in the log and the record and
// direction of each parameter after the header. callbacks.h holds the one table.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <tuple>
#include <type_traits>

#include "vaskdfc/platform.h"

namespace vaskdfc {

template <typename T>
concept Record = std::is_standard_layout_v<T> && std::is_trivially_copyable_v<T> && std::has_unique_object_representations_v<T>;

// A parameter whose layout nobody on this side of the driver knows.
template <std::size_t N>
struct Bytes {
  std::uint8_t bytes[N];
};

// Values of dfc_mgmt_callback::parameter_usage.
enum class Usage : std::uint32_t { kIn = 0, kOut = 1, kInOut = 2 };

template <typename T, Usage kDirection>
struct Parameter {
  static_assert(Record<T>, "a callback's parameter must be a plain record without padding");

  static constexpr std::uint32_t kBytes = sizeof(T);
  static constexpr Usage kUsage = kDirection;

  template <typename Argument>
  static constexpr bool kIsRecord = std::same_as<std::remove_const_t<Argument>, T>;
  // Only what the driver does not write may be const.
  template <typename Argument>
  static constexpr bool kMayPass = kDirection == Usage::kIn || !std::is_const_v<Argument>;
};
template <typename T>
using In = Parameter<T, Usage::kIn>;
template <typename T>
using Out = Parameter<T, Usage::kOut>;
template <typename T>
using InOut = Parameter<T, Usage::kInOut>;

// A text as template argument.
template <std::size_t N>
struct Name {
  char text[N];
  consteval Name(const char (&literal)[N]) { std::ranges::copy(literal, text); }
};

// One callback as data.
struct CallbackFacts {
  std::uint64_t id;
  const char* name;         // empty for a callback that no operation issues
  std::uint8_t parameters;  // the header included
  std::array<std::uint32_t, 4> sizes;
  std::array<std::uint32_t, 4> usages;
};

template <auto kCallback, Name kName, typename... Parameters>
struct Row {
  static_assert(sizeof...(Parameters) <= 3, "a callback takes the header and at most three more parameters");

  static constexpr auto kId = kCallback;
  static constexpr std::size_t kPayloads = sizeof...(Parameters);
  static constexpr CallbackFacts kFacts{
      .id = static_cast<std::uint64_t>(kCallback),
      .name = kName.text,
      .parameters = 1 + kPayloads,
      .sizes = {sizeof(dfc_mgmt_hdr), Parameters::kBytes...},
      .usages = {static_cast<std::uint32_t>(Usage::kInOut), static_cast<std::uint32_t>(Parameters::kUsage)...},
  };

  template <typename... Arguments>
  static consteval bool records_match() {
    return (Parameters::template kIsRecord<Arguments> && ...);
  }
  template <typename... Arguments>
  static consteval bool directions_match() {
    return (Parameters::template kMayPass<Arguments> && ...);
  }
};

// Position of a callback in a table; the table's size for one that it does not hold.
constexpr std::size_t index_of(std::span<const CallbackFacts> table, std::uint64_t id) {
  return static_cast<std::size_t>(std::ranges::find(table, id, &CallbackFacts::id) - table.begin());
}

constexpr bool ids_are_unique(std::span<const CallbackFacts> table) {
  return std::ranges::all_of(table, [=](const CallbackFacts& row) { return &table[index_of(table, row.id)] == &row; });
}

// A callback as the platform takes it.
constexpr dfc_mgmt_callback descriptor_of(const CallbackFacts& row) {
  dfc_mgmt_callback descriptor{.location = 1, .synchronous = 1, .parameter_count = row.parameters, .id = row.id};
  std::ranges::copy(row.sizes, descriptor.parameter_size);
  std::ranges::copy(row.usages, descriptor.parameter_usage);
  return descriptor;
}

template <typename... Rows>
struct Table {
  static constexpr std::size_t kCount = sizeof...(Rows);
  static constexpr std::array<CallbackFacts, kCount> kFacts{Rows::kFacts...};

  template <auto kCallback>
  using At = std::tuple_element_t<index_of(kFacts, static_cast<std::uint64_t>(kCallback)), std::tuple<Rows...>>;
};

}  // namespace vaskdfc
