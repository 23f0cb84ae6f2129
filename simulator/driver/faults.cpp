#include "driver/faults.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <span>
#include <thread>

namespace simulator {
namespace {

struct HeaderWord {
  const char* name;
  std::uint32_t dfc_mgmt_hdr::*word;
};
constexpr std::array kHeaderWords{
    HeaderWord{"arg1", &dfc_mgmt_hdr::arg1}, HeaderWord{"arg2", &dfc_mgmt_hdr::arg2}, HeaderWord{"arg3", &dfc_mgmt_hdr::arg3},
    HeaderWord{"arg4", &dfc_mgmt_hdr::arg4}, HeaderWord{"arg5", &dfc_mgmt_hdr::arg5}, HeaderWord{"arg6", &dfc_mgmt_hdr::arg6},
    HeaderWord{"arg7", &dfc_mgmt_hdr::arg7},
};

bool matches(const scenario::Fault& fault, const vaskdfc::CallbackFacts& callback, std::uint32_t board) {
  return fault.callback == callback.id && (!fault.board || *fault.board == board);
}

// `call` counts from 1.
bool hits(const scenario::Fault& fault, std::uint64_t call) {
  return call >= fault.first_call && (!fault.times || call - fault.first_call < *fault.times);
}

void merge(const scenario::Fault& fault, std::uint64_t call, Disturbance& disturbance) {
  if (fault.platform_status) disturbance.platform_status = fault.platform_status;
  if (fault.driver_status) disturbance.driver_status = fault.driver_status;
  for (const auto& [name, word] : fault.header) disturbance.header[name] = word;
  disturbance.delay_ms += fault.delay_ms;
  // Each call gets bytes of its own, and the same call the same bytes in every run.
  if (fault.garbage_seed) disturbance.garbage_seed = (std::uint64_t{*fault.garbage_seed} << 32) + call;
}

void fill_with_garbage(std::mt19937_64& source, std::span<std::uint8_t> bytes) {
  std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(source()); });
}

}  // namespace

void Disturbance::wait() const {
  if (delay_ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms));
}

void Disturbance::apply(const vaskdfc::CallbackFacts& callback, dfc_mgmt_hdr& header_record, const Payloads& payloads) const {
  if (driver_status) header_record.status = *driver_status;
  for (const HeaderWord& word : kHeaderWords) {
    if (const auto found = header.find(word.name); found != header.end()) header_record.*word.word = found->second;
  }
  if (!garbage_seed) return;

  std::mt19937_64 source(*garbage_seed);
  for (std::size_t i = 1; i < callback.parameters; ++i) {
    if (callback.usages[i] == static_cast<std::uint32_t>(vaskdfc::Usage::kIn)) continue;
    fill_with_garbage(source, {static_cast<std::uint8_t*>(payloads[i - 1]), callback.sizes[i]});
  }
}

Faults::Faults(const std::vector<scenario::Fault>& faults) {
  for (const scenario::Fault& fault : faults) faults_.push_back({fault});
}

Disturbance Faults::strike(const vaskdfc::CallbackFacts& callback, std::uint32_t board) {
  Disturbance disturbance;
  for (Counted& counted : faults_) {
    if (!matches(counted.fault, callback, board)) continue;
    ++counted.calls;
    if (hits(counted.fault, counted.calls)) merge(counted.fault, counted.calls, disturbance);
  }
  return disturbance;
}

}  // namespace simulator
