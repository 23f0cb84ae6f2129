// Every exported operation as a row of a table: how an application calls it, which callbacks it issues then, and what comes of each
// of them failing.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "exhaustive/agreeable_driver.h"
#include "exhaustive/caller.h"
#include "transport/callbacks.h"

namespace vaskdfc::test {

// The result that a failure leads to.
class Result {
 public:
  constexpr Result(std::uint32_t value) : kind_(Kind::kValue), value_(value) {}
  // The operation goes on, and its result is the same as without the failure.
  static constexpr Result as_ever() { return Result(Kind::kAsEver); }
  // The status itself.
  static constexpr Result status() { return Result(Kind::kStatus); }

  constexpr std::uint32_t of(std::uint32_t status, std::uint32_t without_failure) const {
    if (kind_ == Kind::kValue) return value_;
    return kind_ == Kind::kStatus ? status : without_failure;
  }

 private:
  enum class Kind : std::uint8_t { kValue, kAsEver, kStatus };
  constexpr explicit Result(Kind kind) : kind_(kind), value_(0) {}

  Kind kind_;
  std::uint32_t value_;
};

// A callback that an operation issues, and the result when it fails: in the platform, in the driver with a status that means
// nothing to the operation, in the driver with one that does.
struct Step {
  Callback callback;
  Result platform;
  Result driver;
  std::vector<std::pair<std::uint32_t, Result>> mapped = {};
};
using Steps = std::vector<Step>;

// Steps one after another.
Steps operator+(Steps first, const Steps& second);
Steps repeated(std::uint32_t times, const Steps& steps);

// A callback whose failure has one result wherever it happens, but for statuses that mean something.
inline Steps fails(Callback callback, Result result, std::vector<std::pair<std::uint32_t, Result>> mapped = {}) {
  return {{.callback = callback, .platform = result, .driver = result, .mapped = std::move(mapped)}};
}
inline Steps does_not_matter(Callback callback) { return fails(callback, Result::as_ever()); }

// The four callbacks that tell the SLI mode, of which two may fail.
Steps sli_mode(Result failure);

// Which adapters a row is for.
enum class Generation : std::uint8_t { kAny, kSli3, kSli4 };

// A board of the agreeable driver with such an adapter.
constexpr std::uint32_t board_of(Generation generation) {
  return generation == Generation::kSli3 ? AgreeableDriver::kFirstOlder : 2;
}

// What a row needs to have to itself.
enum class Scope : std::uint8_t {
  kBoard,    // its board
  kLibrary,  // the library: it starts or ends it, or addresses every board
};

struct Operation {
  std::string_view name;
  std::uint32_t (*call)(Caller& caller);
  Generation generation = Generation::kAny;
  Scope scope = Scope::kBoard;
  Steps steps = {};
  // Results when the first, the second allocation and so on fails.
  std::vector<Result> without_memory = {};
  // Why a failed call changes the caller's memory, where it does.
  std::string_view writes_on_failure = {};
};

// All of them, some in several rows.
const std::vector<Operation>& operations();

// Rows of one header each.
std::vector<Operation> access_operations();
std::vector<Operation> event_operations();
std::vector<Operation> fabric_operations();
std::vector<Operation> fcoe_operations();
std::vector<Operation> hbaapi_operations();
std::vector<Operation> info_operations();
std::vector<Operation> loopback_operations();
std::vector<Operation> mailbox_operations();
std::vector<Operation> mapping_operations();
std::vector<Operation> oas_operations();
std::vector<Operation> priority_operations();
std::vector<Operation> region_operations();
std::vector<Operation> scsi_operations();
std::vector<Operation> transport_operations();
std::vector<Operation> unimplemented_operations();
std::vector<Operation> vport_operations();

}  // namespace vaskdfc::test
