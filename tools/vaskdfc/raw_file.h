// Files of raw bytes that the user names.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "report.h"

namespace vaskdfc::tool {

// The whole file. A Failure with exit code 2 where it cannot be read or has more than `most` bytes.
std::vector<std::uint8_t> read_file(const std::string& path, std::size_t most);

// Replaces the file, whole or not at all; a pipe or a device just gets the bytes. A Failure with exit code 1 where that cannot be
// done.
void write_file(const std::string& path, std::span<const std::uint8_t> bytes);

// The name of a file that something was written to, if it was.
Cell file_cell(const std::optional<std::string>& file);

// Bytes as a report shows them: in the file, which they are written to first, or as they are where there is none.
std::vector<Field> delivered_fields(const std::optional<std::string>& file, std::span<const std::uint8_t> bytes,
                                    const char* key = "reply", const char* title = "Reply");

}  // namespace vaskdfc::tool
