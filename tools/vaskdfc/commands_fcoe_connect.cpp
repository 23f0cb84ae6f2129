// Commands about the forwarders that a port may log in to: fcoe connect.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>

#include "change_report.h"
#include "command_line.h"
#include "decode.h"
#include "region_fields.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

using Entries = std::vector<ConnectEntry>;

struct Arguments {
  std::string adapter;
  std::string vlan;
  std::vector<std::string> names;
  std::string flags = "1";
  std::string position;
};

Entries read_entries(std::uint32_t adapter) {
  dfc_fcf_conn_list list{};
  list.numEntries = DFC_FCF_CONNECT_ENTRIES;
  watch_driver_calls();
  const std::uint32_t result = DFC_FCoEGetFCFConnectList(adapter, &list);
  if (result != DFC_OK) {
    throw operation_failure("the FCF connect list cannot be read", adapter, "DFC_FCoEGetFCFConnectList", Results::kRegion, result);
  }
  Entries entries;
  for (std::size_t i = 0; i < std::min<std::size_t>(list.numEntries, DFC_FCF_CONNECT_ENTRIES); ++i) {
    const dfc_fcf_connect_entry& stored = list.entries[i];
    ConnectEntry entry{.flags = stored.flags, .vlan = stored.vlan_id};
    std::ranges::copy(stored.names, entry.names.begin());
    entries.push_back(entry);
  }
  return entries;
}

std::uint32_t write_entries(std::uint32_t adapter, const Entries& entries) {
  dfc_fcf_conn_list list{};
  list.numEntries = static_cast<std::uint8_t>(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    list.entries[i].flags = entries[i].flags;
    list.entries[i].vlan_id = entries[i].vlan;
    std::ranges::copy(entries[i].names, list.entries[i].names);
  }
  return DFC_FCoESetFCFConnectList(adapter, &list);
}

// All 32 digits at once, or two WWNs.
std::array<std::uint8_t, 16> names_argument(const std::vector<std::string>& spellings) {
  std::array<std::uint8_t, 16> names{};
  const std::size_t each = names.size() / spellings.size();
  for (std::size_t i = 0; i < spellings.size(); ++i) {
    const auto bytes = parse_bytes(spellings[i], each);
    if (!bytes) {
      throw usage_failure(fmt::format("--names: \"{}\" is not {} hexadecimal digits", spellings[i], each * 2),
                          "32 digits, or two WWNs as in 20:00:00:11:22:33:44:55 10:00:00:11:22:33:44:55");
    }
    std::ranges::copy(*bytes, names.begin() + static_cast<std::ptrdiff_t>(i * each));
  }
  return names;
}

ConnectEntry entry_argument(const Arguments& arguments) {
  constexpr std::uint32_t kMostFlags = 0x3F;  // the library keeps these
  constexpr std::uint16_t kInUse = 1;         // and sets this one
  ConnectEntry entry{.flags = static_cast<std::uint16_t>(number_argument("--flags", arguments.flags, kMostFlags) | kInUse),
                     .vlan = vlan_argument(arguments.vlan)};
  entry.names = names_argument(arguments.names);
  return entry;
}

void list(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  Section section =
      table_section("entries", "Entries", {{"position", "POSITION"}, {"vlan", "VLAN"}, {"names", "NAMES"}, {"flags", "FLAGS"}});
  const Entries entries = read_entries(adapter);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    section.records.push_back({number_cell(i), number_cell(entries[i].vlan), text_cell(names_text(entries[i].names)),
                               text_cell(fmt::format("0x{:02x}", entries[i].flags))});
  }
  context.print({.command = "fcoe connect list", .sections = {std::move(section)}});
}

// Changes the list as a whole, which is how it is stored.
void edit(Context& context, const Arguments& arguments, const std::string& command, const std::string& intent,
          const std::function<void(Entries&)>& make_change) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const Entries before = read_entries(adapter);
  Entries wanted = before;
  make_change(wanted);
  const Setting setting{.command = command,
                        .adapter = adapter,
                        .intent = intent,
                        .place = "region 23",
                        .operation = "DFC_FCoESetFCFConnectList",
                        .results = Results::kRegion,
                        .read = [=] { return connect_list_fields(read_entries(adapter)); },
                        .write = [=] { return write_entries(adapter, wanted); }};
  change(context, setting, connect_list_fields(before), connect_list_fields(wanted));
}

void add_entry(Context& context, const Arguments& arguments) {
  const ConnectEntry entry = entry_argument(arguments);
  edit(context, arguments, "fcoe connect add", "add an entry to the FCF connect list", [&](Entries& entries) {
    if (std::ranges::find(entries, entry) != entries.end()) return;
    if (entries.size() == DFC_FCF_CONNECT_ENTRIES) {
      throw plain_failure(Exit::kFailed, fmt::format("the FCF connect list is full: it has {} entries", entries.size()),
                          "remove one with \"vaskdfc fcoe connect remove ADAPTER POSITION\"");
    }
    entries.push_back(entry);
  });
}

void remove_entry(Context& context, const Arguments& arguments) {
  const std::uint32_t position = number_argument("POSITION", arguments.position, DFC_FCF_CONNECT_ENTRIES - 1);
  edit(context, arguments, "fcoe connect remove", fmt::format("remove entry {} from the FCF connect list", position),
       [&](Entries& entries) {
         if (position >= entries.size()) {
           throw plain_failure(Exit::kFailed, fmt::format("the FCF connect list has no entry {}", position),
                               "\"vaskdfc fcoe connect list ADAPTER\" shows the positions, which count from 0");
         }
         entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(position));
       });
}

void clear(Context& context, const Arguments& arguments) {
  edit(context, arguments, "fcoe connect clear", "empty the FCF connect list", [](Entries& entries) { entries.clear(); });
}

}  // namespace

void add_fcoe_connect_commands(CommandLine& commands) {
  const std::string wwns = "20:00:00:11:22:33:44:55 10:00:00:11:22:33:44:55";
  const std::vector<std::string> add_examples{fmt::format("vaskdfc fcoe connect add 0 --vlan 1002 --names {}", wwns)};
  commands.group("fcoe connect", "Forwarders that a port may log in to: the FCF connect list",
                 {"vaskdfc fcoe connect list 0", add_examples.front(), "vaskdfc fcoe connect remove 0 1"});
  auto arguments = std::make_shared<Arguments>();
  commands.add_for_adapter("fcoe connect list", "List the entries", {"vaskdfc fcoe connect list 0"}, arguments, list);

  const Command add = commands.add_for_adapter("fcoe connect add", "Add an entry at the end", add_examples, arguments, add_entry);
  add.add_option("--vlan", arguments->vlan, "VLAN id to use, 0 to 4095").type_name("ID").required();
  add.add_option("--names", arguments->names, "Names of the forwarder: two WWNs, or 32 hexadecimal digits")
      .type_name("NAMES")
      .expected(1, 2)
      .required();
  add.add_option("--flags", arguments->flags, "Flags of the entry, 0 to 0x3f; bit 0 is always set").type_name("FLAGS");

  commands
      .add_for_adapter("fcoe connect remove", "Remove the entry at a position", {"vaskdfc fcoe connect remove 0 1"}, arguments,
                       remove_entry)
      .add_option("POSITION", arguments->position, "Position of the entry, from 0")
      .required();
  commands.add_for_adapter("fcoe connect clear", "Remove all entries", {"vaskdfc fcoe connect clear 0"}, arguments, clear);
}

}  // namespace vaskdfc::tool
