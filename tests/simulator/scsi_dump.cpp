// Sends one SCSI command to a unit of the built-in scenario and prints what comes back:
// scsi_dump LUN CDB ROOM, the first two in hexadecimal.
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "scsi_exchange.h"

namespace {

Bytes bytes_of(std::string_view digits) {
  Bytes result;
  for (; digits.size() >= 2; digits.remove_prefix(2)) {
    std::uint8_t byte = 0;
    std::from_chars(digits.data(), digits.data() + 2, byte, 16);
    result.push_back(byte);
  }
  return result;
}

void print(const char* what, const Bytes& bytes) {
  std::printf("%s:", what);
  for (const std::uint8_t byte : bytes) std::printf(" %02x", unsigned{byte});
  std::printf("\n");
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  Session session;
  const ScsiResult result = send(session, {.lun = bytes_of(arguments[1]),
                                           .cdb = bytes_of(arguments[2]),
                                           .room = static_cast<std::uint32_t>(std::atoi(arguments[3])),
                                           .data = {}});
  std::printf("status: %08x\n", result.status);
  print("data", result.data);
  print("sense", result.sense);
  return result.status == 0 ? 0 : 1;
}
