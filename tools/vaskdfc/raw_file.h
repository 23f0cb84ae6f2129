// Files of raw bytes that the user names.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vaskdfc::tool {

// The whole file. A Failure with exit code 2 where it cannot be read or has more than `most` bytes.
std::vector<std::uint8_t> read_file(const std::string& path, std::size_t most);

// Replaces the file, whole or not at all. A Failure with exit code 1 where that cannot be done.
void write_file(const std::string& path, std::span<const std::uint8_t> bytes);

}  // namespace vaskdfc::tool
