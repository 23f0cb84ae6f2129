// Sense data of SPC: why a logical unit did not do what it was asked.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report.h"
#include "wire.h"

namespace vaskdfc::tool {

struct Sense {
  bool deferred = false;  // about an earlier command
  std::uint8_t key = 0;
  std::uint8_t code = 0;       // additional sense code
  std::uint8_t qualifier = 0;  // additional sense code qualifier
  std::optional<std::uint64_t> information;
};

// Nothing for bytes that are no sense data. Fields that the bytes end before are 0.
std::optional<Sense> parse_sense(Bytes bytes);

std::string sense_key_name(std::uint8_t key);
// Empty for a code that this table does not have.
std::string additional_sense_name(std::uint8_t code, std::uint8_t qualifier);

// As in "ILLEGAL REQUEST: logical block address out of range (5/21/00)".
std::string sense_text(Bytes bytes);

// The fields of a report about these bytes.
std::vector<Field> sense_fields(Bytes bytes);

}  // namespace vaskdfc::tool
