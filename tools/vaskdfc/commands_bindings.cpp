// Commands about persistent bindings: bindings.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <memory>

#include "command_line.h"
#include "decode.h"
#include "driver_list.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

using Bindings = DriverList<FcpBindList, FcpBinding>;

constexpr std::uint32_t kRoom = 4096;  // as many as the library receives

std::vector<FcpBinding> read_bindings(std::uint32_t adapter) {
  Bindings bindings(kRoom);
  watch_driver_calls();
  const std::uint32_t result = GetFcpBindList(adapter, bindings.get());
  if (result == HBA_STATUS_OK) return bindings.entries();
  throw operation_failure("the bindings cannot be read", adapter, "GetFcpBindList", Results::kHba, result);
}

std::vector<std::string> words_of(const FcpBinding& binding) {
  std::vector<std::string> words;
  for (const std::uint32_t word : binding.words) words.push_back(hex_cell(word).text);
  return words;
}

// The layout of a binding is the driver's, so its words are shown as they are.
void bindings(Context& context, const std::string& name) {
  const Session session;
  const std::uint32_t adapter = session.find(name);
  Section section = table_section("bindings", "Bindings", {{"position", "POSITION"}, {"words", "WORDS"}});
  for (const FcpBinding& binding : read_bindings(adapter)) {
    const auto words = words_of(binding);
    section.records.push_back({number_cell(section.records.size()), {words, fmt::format("{}", fmt::join(words, " "))}});
  }
  context.print({.command = "bindings", .sections = {std::move(section)}});
}

}  // namespace

void add_bindings_commands(CommandLine& commands) {
  auto name = std::make_shared<std::string>();
  commands
      .add("bindings", "List the persistent bindings, word by word", {"vaskdfc bindings 0", "vaskdfc bindings 0 -o json"},
           [name](Context& context) { bindings(context, *name); })
      .add_option("ADAPTER", *name, kAdapterHelp)
      .required();
}

}  // namespace vaskdfc::tool
