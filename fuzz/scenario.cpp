// Scenario files: any bytes as the text of one. It is refused with a sentence that says where it is wrong, or the simulated driver
// starts with it and answers every callback.
#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "driver/driver.h"
#include "promise.h"
#include "scenario/load.h"
#include "transport/callbacks.h"

namespace vaskdfc::fuzz {
namespace {

constexpr std::string_view kFile = "scenario.json";

void check_refusal(std::string_view problem) {
  promise(problem.starts_with(kFile) && problem.substr(kFile.size()).starts_with(':'), "a refusal names the file");
  promise(problem.find(": ") + 2 < problem.size(), "a refusal says what is wrong");
  const auto is_plain = [](char c) { return static_cast<unsigned char>(c) >= 0x20 && c != 0x7F; };
  promise(std::ranges::all_of(problem, is_plain), "a refusal is one line without control characters");
}

// Parameters of just the size that the callback has.
class Parameters {
 public:
  explicit Parameters(const CallbackFacts& callback) : callback_(callback) {
    for (std::size_t i = 0; i < payloads_.size(); ++i) {
      bytes_[i] = std::make_unique<std::uint8_t[]>(callback.sizes[i + 1]);
      payloads_[i] = i + 1 < callback.parameters ? bytes_[i].get() : nullptr;
    }
  }

  void fill(std::uint8_t byte) {
    for (std::size_t i = 0; i < payloads_.size(); ++i) std::fill_n(bytes_[i].get(), callback_.sizes[i + 1], byte);
  }

  const simulator::Payloads& payloads() const { return payloads_; }

 private:
  const CallbackFacts& callback_;
  std::array<std::unique_ptr<std::uint8_t[]>, 3> bytes_;
  simulator::Payloads payloads_{};
};

// What callers send: nothing, a small number, what no call has.
constexpr std::uint32_t kWords[] = {0, 1, UINT32_MAX};

void call(simulator::Driver& driver, const CallbackFacts& callback, std::uint32_t board) {
  static const std::string kInterface = "vaskfcoe-mgmt";
  Parameters parameters(callback);
  for (const std::uint32_t word : kWords) {
    parameters.fill(static_cast<std::uint8_t>(word));
    dfc_mgmt_hdr header{
        .brdno = board, .arg1 = word, .arg2 = word, .arg3 = word, .arg4 = word, .arg5 = word, .arg6 = word, .arg7 = word};
    (void)driver.invoke(kInterface, callback, header, parameters.payloads());
  }
}

void start(simulator::scenario::Scenario scenario) {
  for (simulator::scenario::Fault& fault : scenario.faults) fault.delay_ms = 0;  // nobody waits for a fuzzer's driver
  simulator::Driver driver(std::move(scenario), simulator::memory_store(), nullptr);
  constexpr std::size_t kMostAdapters = 2;  // further ones have nothing new to say
  const std::span<const simulator::scenario::Adapter> adapters = driver.scenario().adapters;
  for (const simulator::scenario::Adapter& adapter : adapters.first(std::min(adapters.size(), kMostAdapters))) {
    for (const CallbackFacts& callback : Callbacks::kFacts) {
      const bool is_issued = *callback.name != '\0';
      if (is_issued) call(driver, callback, adapter.board);
    }
  }
}

}  // namespace
}  // namespace vaskdfc::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vaskdfc::fuzz;
  simulator::scenario::Scenario scenario;
  try {
    scenario = simulator::scenario::load_text(kFile, {reinterpret_cast<const char*>(data), size});
  } catch (const simulator::scenario::ScenarioError& error) {
    check_refusal(error.what());
    return 0;
  }
  start(std::move(scenario));
  return 0;
}
