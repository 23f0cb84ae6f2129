// Prints what the tool makes of bytes from a logical unit: scsi_decode sense|inquiry|designators|lun HEX, a fact a line.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "decode.h"
#include "scsi_data.h"
#include "scsi_sense.h"

namespace vaskdfc::tool {
namespace {

void print(const std::vector<Field>& fields) {
  for (const Field& field : fields) std::printf("%s: %s\n", field.key.c_str(), field.cell.text.c_str());
}

void print_designators(Bytes page) {
  for (const Designator& designator : parse_designators(page)) {
    std::printf("%s: %s: %s\n", designator.association.c_str(), designator.kind.c_str(), designator.text.c_str());
  }
}

int decode(const std::string& what, const std::string& digits) {
  const auto bytes = parse_bytes(digits, digits.size() / 2);
  if (!bytes) return EXIT_FAILURE;
  if (what == "sense") print(sense_fields(*bytes));
  if (what == "inquiry") print(inquiry_fields(*bytes));
  if (what == "designators") print_designators(*bytes);
  if (what == "lun") std::printf("%s\n", lun_text(lun_argument("0x" + digits)).c_str());
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace vaskdfc::tool

int main(int count, char** arguments) {
  if (count != 3) return EXIT_FAILURE;
  return vaskdfc::tool::decode(arguments[1], arguments[2]);
}
