// A command to a logical unit and what comes back.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "command_line.h"
#include "scsi_data.h"
#include "session.h"

namespace vaskdfc::tool {

struct UnitArguments {
  std::string adapter;
  std::string target;
  std::string lun = "0";
};
// Returns the LUN, which a command may require.
Argument add_unit_arguments(const Command& command, UnitArguments& arguments);

struct UnitAddress {
  std::uint32_t adapter = 0;
  HbaWwn target{};
  Lun lun{};
};
Section unit_section(const UnitAddress& unit);

// A session with the unit that the arguments name; what is spelled wrongly is refused before the library is opened.
class UnitSession {
 public:
  explicit UnitSession(const UnitArguments& arguments);
  const UnitAddress& unit() const { return unit_; }

 private:
  UnitAddress unit_;
  std::optional<Session> session_;
};

struct Answer {
  std::string operation;
  std::vector<std::uint8_t> data;
  std::vector<std::uint8_t> sense;
};

// Any of the library's SCSI operations: data, its length, sense, its length.
using Exchange = std::function<std::uint32_t(void*, std::uint32_t*, void*, std::uint32_t*)>;

// Sends a command with these bytes, in a buffer of at least `room`. A Failure where the library could not; a command that the unit
// refused was sent all the same.
Answer ask(const UnitAddress& unit, const std::string& operation, std::uint32_t room, const Exchange& exchange, Bytes out = {});

// The answer, if the unit did as it was told. Otherwise a Failure with what the sense data say.
const Answer& completed(const UnitAddress& unit, const Answer& answer);

// INQUIRY, for standard data or a page of the vital product data.
Answer inquiry(const UnitAddress& unit, std::optional<std::uint8_t> page);

// READ CAPACITY(10). A Failure where the unit does not tell.
Capacity read_capacity(const UnitAddress& unit);

}  // namespace vaskdfc::tool
