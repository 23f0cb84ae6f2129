#include "rejection.h"

#include <fmt/format.h>

#include <array>

#include "code_names.h"

namespace vaskdfc::tool {
namespace {

// FC-LS and FC-GS give these the same meaning.
constexpr std::array kSharedReasons{CodeName{0x01, "invalid command code"},
                                    CodeName{0x03, "logical error"},
                                    CodeName{0x05, "logical busy"},
                                    CodeName{0x07, "protocol error"},
                                    CodeName{0x09, "unable to perform command request"},
                                    CodeName{0x0B, "command not supported"},
                                    CodeName{0xFF, "vendor specific"}};
constexpr std::array kSharedExplanations{CodeName{0x00, "no additional explanation"}};

std::string name_in_either(std::span<const CodeName> shared, std::span<const CodeName> own, std::uint8_t code) {
  return name_in(shared, code, name_in(own, code, "unknown"));
}

}  // namespace

std::string rejection_text(std::uint8_t reason, std::span<const CodeName> reasons, std::uint8_t explanation,
                           std::span<const CodeName> explanations) {
  return fmt::format("{} ({:x}), {} ({:x})", name_in_either(kSharedReasons, reasons, reason), reason,
                     name_in_either(kSharedExplanations, explanations, explanation), explanation);
}

}  // namespace vaskdfc::tool
