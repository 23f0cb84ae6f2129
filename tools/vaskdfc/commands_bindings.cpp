// Commands about persistent bindings: bindings.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <bit>
#include <memory>

#include "command_line.h"
#include "decode.h"
#include "driver_list.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

using Bindings = DriverList<FcpBindList, FcpBinding>;

constexpr std::uint32_t kRoom = 4096;  // as many as the library receives

// What the driver fills in; the layout is its own, so the words are shown as well.
struct Binding {
  enum class Key : std::uint32_t { kPortWwn = 1, kNodeWwn = 2, kFcId = 3 } key;
  HbaWwn wwn;
  std::uint32_t fc_id;
  std::uint32_t bus;
  std::uint32_t target;
  std::uint32_t is_present;
  std::uint32_t not_used;
};

std::vector<FcpBinding> read_bindings(std::uint32_t adapter) {
  Bindings bindings(kRoom);
  watch_driver_calls();
  const std::uint32_t result = GetFcpBindList(adapter, bindings.get());
  if (result == HBA_STATUS_OK) return bindings.entries();
  throw operation_failure("the bindings cannot be read", adapter, "GetFcpBindList", Results::kHba, result);
}

std::string key_name(Binding::Key key) {
  switch (key) {
    case Binding::Key::kPortWwn: return "port WWN";
    case Binding::Key::kNodeWwn: return "node WWN";
    case Binding::Key::kFcId: return "FC ID";
  }
  return hex_cell(static_cast<std::uint32_t>(key)).text;
}

Cell name_cell(const Binding& binding) {
  switch (binding.key) {
    case Binding::Key::kPortWwn:
    case Binding::Key::kNodeWwn: return wwn_cell(binding.wwn);
    case Binding::Key::kFcId: return fc_id_cell(binding.fc_id);
  }
  return absent();
}

Cell words_cell(const FcpBinding& binding) {
  std::vector<std::string> words;
  for (const std::uint32_t word : binding.words) words.push_back(hex_cell(word).text);
  return {words, fmt::format("{}", fmt::join(words, " "))};
}

void bindings(Context& context, const std::string& name) {
  const Session session;
  const std::uint32_t adapter = session.find(name);
  Section section = blocks_section("bindings", fmt::format("Bindings of adapter {}", adapter),
                                   {{"position", "Position"},
                                    {"bound_by", "Bound by"},
                                    {"name", "Name"},
                                    {"bus", "Bus"},
                                    {"target", "Target"},
                                    {"present", "Present"},
                                    {"words", "Words"}});
  for (const FcpBinding& record : read_bindings(adapter)) {
    const auto binding = std::bit_cast<Binding>(record);
    section.records.push_back({number_cell(section.records.size()), text_cell(key_name(binding.key)), name_cell(binding),
                               number_cell(binding.bus), number_cell(binding.target), flag_cell(binding.is_present != 0),
                               words_cell(record)});
  }
  context.print({.command = "bindings", .sections = {std::move(section)}});
}

}  // namespace

void add_bindings_commands(CommandLine& commands) {
  auto name = std::make_shared<std::string>();
  commands.add_for_adapter("bindings", "List the persistent bindings", {"vaskdfc bindings 0", "vaskdfc bindings 0 -o json"}, name,
                           bindings);
}

}  // namespace vaskdfc::tool
