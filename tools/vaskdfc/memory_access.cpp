#include "memory_access.h"

#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>

#include "decode.h"
#include "driver_record.h"
#include "failure.h"
#include "progress.h"
#include "raw_file.h"

namespace vaskdfc::tool {

std::vector<std::uint8_t> read_memory(std::uint32_t adapter, std::uint32_t address, std::uint32_t count) {
  std::vector<std::uint8_t> bytes(count);
  Progress progress("reading memory", count);
  for (std::uint32_t done = 0; done < count;) {
    progress.reached(done);
    const std::uint32_t now = std::min(count - done, DFC_ACCESS_BYTES);
    watch_driver_calls();
    const std::uint32_t result = ReadMem(adapter, bytes.data() + done, address + done, now);
    if (result != DFC_OK) {
      throw operation_failure(fmt::format("the memory at 0x{:08x} cannot be read", address + done), adapter, "ReadMem",
                              Results::kAccess, result);
    }
    done += now;
  }
  return bytes;
}

std::vector<std::uint8_t> bytes_to_write(const std::vector<std::string>& words, const std::optional<std::string>& file,
                                         std::size_t most) {
  if (file.has_value() == !words.empty()) {
    throw usage_failure("either BYTES or --file FILE must be given", "BYTES are pairs of hexadecimal digits, as in: de ad be ef");
  }
  std::vector<std::uint8_t> bytes = file ? read_file(*file, most) : std::vector<std::uint8_t>{};
  for (const std::string& word : words) {
    const auto parsed = parse_bytes(word, word.size() / 2);
    if (word.empty() || !parsed) throw usage_failure(fmt::format("BYTES: \"{}\" is not pairs of hexadecimal digits", word));
    bytes.insert(bytes.end(), parsed->begin(), parsed->end());
  }
  if (bytes.empty()) throw usage_failure("there are no bytes to write");
  if (bytes.size() > most)
    throw usage_failure(fmt::format("{} bytes are too many: at most {} are written at once", bytes.size(), most));
  return bytes;
}

std::vector<Field> line_fields(Bytes bytes, std::size_t first_offset) {
  std::vector<Field> fields;
  for (std::size_t offset = 0; offset < bytes.size(); offset += kLineBytes) {
    const Bytes line = part(bytes, offset, kLineBytes);
    const std::size_t at = first_offset + offset;
    fields.push_back({fmt::format("bytes_{:08x}", at), fmt::format("Bytes at 0x{:08x}", at), hex_bytes_cell(line)});
  }
  return fields;
}

}  // namespace vaskdfc::tool
