// Adapter memory, and bytes that are written over others.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "report.h"
#include "wire.h"

namespace vaskdfc::tool {

// More than any adapter has; what is read is held whole.
inline constexpr std::uint32_t kMostMemoryBytes = 1U << 24;

// Reads memory in as many calls as it takes.
std::vector<std::uint8_t> read_memory(std::uint32_t adapter, std::uint32_t address, std::uint32_t count);

// Bytes from the command line, as pairs of digits in any number of words, or from a file, and at least one.
std::vector<std::uint8_t> bytes_to_write(const std::vector<std::string>& words, const std::optional<std::string>& file,
                                         std::size_t most);

// Bytes as fields to compare, a line each.
std::vector<Field> line_fields(Bytes bytes, std::size_t first_offset);

}  // namespace vaskdfc::tool
