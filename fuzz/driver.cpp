// The hostile driver: the input becomes what the platform and the driver answer to a sequence of exported operations, and what the
// application passes to them. Whatever they answer, the library stays inside its own memory and that of the application, which is
// as large as the operations' documentation asks for.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "exhaustive/operation.h"
#include "exhaustive/platform.h"
#include "promise.h"
#include "transport/log.h"

extern "C" {
void* __real_malloc(std::size_t bytes);
void* __real_calloc(std::size_t count, std::size_t bytes);
}

namespace {

using namespace vaskdfc;
using namespace vaskdfc::test;
using vaskdfc::fuzz::promise;

FuzzedDataProvider* input = nullptr;

// Counts down to the allocation that fails; never gets there from 0.
std::uint32_t allocations_left = 0;

bool is_refused() { return allocations_left != 0 && --allocations_left == 0; }

bool one_in(std::uint32_t times) { return input->remaining_bytes() != 0 && input->ConsumeIntegralInRange(1u, times) == times; }

std::uint32_t any_word() {
  switch (input->ConsumeIntegralInRange(0, 3)) {
    case 0: return input->ConsumeIntegral<std::uint8_t>();
    case 1: return input->ConsumeIntegral<std::uint16_t>();
    case 2: return input->ConsumeIntegral<std::uint32_t>();
    default: return UINT32_MAX - input->ConsumeIntegral<std::uint8_t>();
  }
}

// An application that passes whatever its operations accept.
class HostileCaller : public Caller {
 public:
  using Caller::Caller;

  std::uint32_t number(std::uint32_t ordinary, std::uint32_t most) override {
    return one_in(4) ? std::min(any_word(), most) : ordinary;
  }

 protected:
  void fill(std::span<std::uint8_t> memory) override {
    Caller::fill(memory);
    if (one_in(2)) input->ConsumeData(memory.data(), std::min<std::size_t>(memory.size(), 32));
  }
};

// Statuses that mean something to one operation or another, and others.
std::uint32_t driver_status() {
  constexpr std::uint32_t kStatuses = 0x0BAD0000;
  return one_in(8) ? any_word() : kStatuses | input->ConsumeIntegralInRange(0u, 0x100u);
}

void change_header(dfc_mgmt_hdr& header) {
  for (std::uint32_t* const word : {&header.arg1, &header.arg2, &header.arg3, &header.arg4, &header.arg5, &header.arg6}) {
    if (one_in(3)) *word = any_word();
  }
}

void change_payload(std::span<std::uint8_t> payload) {
  if (one_in(3)) std::memset(payload.data(), input->ConsumeIntegral<std::uint8_t>(), payload.size());
  const std::size_t offset = one_in(2) ? input->ConsumeIntegralInRange<std::size_t>(0, payload.size() - 1) : 0;
  input->ConsumeData(payload.data() + offset, std::min<std::size_t>(payload.size() - offset, 64));
}

// Without input left, a driver that agrees, so that everything comes to an end.
int answer_as_told(Callback callback, const Parameters& parameters) {
  AgreeableDriver::answer(callback, parameters);
  if (!one_in(2)) return 0;

  auto& header = *static_cast<dfc_mgmt_hdr*>(parameters[0]);
  const CallbackFacts& facts = facts_of(callback);
  if (one_in(2)) change_header(header);
  for (std::size_t at = 1; at < facts.parameters; ++at) {
    if (static_cast<Usage>(facts.usages[at]) == Usage::kIn || !one_in(2)) continue;
    change_payload({static_cast<std::uint8_t*>(parameters[at]), facts.sizes[at]});
  }
  if (one_in(4)) header.status = driver_status();
  return one_in(8) ? static_cast<int>(any_word()) : 0;
}

void call_one() {
  const std::vector<Operation>& all = operations();
  const Operation& operation = all[input->ConsumeIntegralInRange<std::size_t>(0, all.size() - 1)];
  HostileCaller caller(one_in(4) ? input->ConsumeIntegralInRange(0u, 31u) : board_of(operation.generation));
  allocations_left = one_in(8) ? input->ConsumeIntegralInRange(1u, 12u) : 0;
  operation.call(caller);
  allocations_left = 0;
  promise(caller.guards_are_whole(), "nothing is written beside the application's memory");
}

}  // namespace

extern "C" {

void* __wrap_malloc(std::size_t bytes) { return is_refused() ? nullptr : __real_malloc(bytes); }
void* __wrap_calloc(std::size_t count, std::size_t bytes) { return is_refused() ? nullptr : __real_calloc(count, bytes); }

// The files of the host stay out of it.
std::FILE* __wrap_fopen64(const char*, const char*) { return nullptr; }

unsigned __wrap_sleep(unsigned) { return 0; }
int __wrap_usleep(unsigned) { return 0; }

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static std::FILE* const nowhere = std::fopen("/dev/null", "a");
  FuzzedDataProvider provider(data, size);
  input = &provider;
  answer = answer_as_told;
  start_library();
  fLogger = one_in(4) ? nowhere : nullptr;
  LogLevel = 0xF;
  while (provider.remaining_bytes() != 0) call_one();
  return 0;
}

}  // extern "C"
