// Records whose layout is the driver's: a field is where it stands and how it is read. A record may end anywhere; what it ends
// before is not known.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "report.h"
#include "wire.h"

namespace vaskdfc::tool {

struct RecordField {
  const char* key;
  const char* title;
  std::size_t offset;
  std::size_t bytes;
  Cell (*cell)(Bytes);
};

std::vector<Field> fields_of(Bytes record, std::span<const RecordField> layout);

// A table with a column for each of these fields, and such fields as a line of it.
Section table_like(std::string key, std::string title, const std::vector<Field>& fields);
Record line_of(const std::vector<Field>& fields);

// Drivers keep numbers little-endian, in at most eight bytes.
std::uint64_t little_endian(Bytes bytes);

// The number of four bytes at this place; nothing where the bytes end before.
std::optional<std::uint32_t> word_at(Bytes bytes, std::size_t at);

// How fields are read.
Cell number_in(Bytes bytes);
Cell hex_in(Bytes bytes);  // with as many digits as there are
Cell text_in(Bytes bytes);
Cell wwn_in(Bytes bytes);
Cell fc_id_in(Bytes bytes);
Cell bytes_in(Bytes bytes);

// Any record as its bytes.
template <typename Record>
Bytes bytes_of(const Record& record) {
  return {reinterpret_cast<const std::uint8_t*>(&record), sizeof(record)};
}

// Bytes as they are, so many a line, from this offset on.
inline constexpr std::size_t kLineBytes = 16;
Section lines_section(Bytes bytes, std::size_t first_offset = 0);

// What a command reports of a record that is wanted as it is.
Report raw_report(const char* command, std::uint32_t adapter, Bytes bytes);

// How help texts describe the flag that asks for that.
inline constexpr const char* kRawHelp = "Show the driver's record as it is: another driver may lay it out otherwise";

}  // namespace vaskdfc::tool
