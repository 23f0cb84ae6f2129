// Commands about the persistent link-down setting: linkdown get, linkdown set.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <memory>

#include "change_report.h"
#include "command_line.h"
#include "region_access.h"
#include "region_fields.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  std::string value;
};

bool stays_down(std::uint32_t adapter) {
  std::uint16_t value = 0;
  watch_driver_calls();
  const std::uint32_t result = DFC_GetPersistLinkDown(adapter, &value);
  if (result != DFC_OK) {
    throw operation_failure("the persistent link-down setting cannot be read", adapter, "DFC_GetPersistLinkDown", Results::kRegion,
                            result);
  }
  return value != 0;
}

bool parse_switch(const std::string& spelling) {
  if (spelling == "on") return true;
  if (spelling == "off") return false;
  throw usage_failure(fmt::format("VALUE: \"{}\" is neither on nor off", spelling));
}

void get(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  auto fields = joined({{"adapter", "Adapter", number_cell(adapter)}}, link_down_fields(stays_down(adapter)));
  context.print({.command = "linkdown get", .sections = {record_section("linkdown", "Persistent link down", std::move(fields))}});
}

void set(Context& context, const Arguments& arguments) {
  const bool wanted = parse_switch(arguments.value);
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto read = [=] { return link_down_fields(stays_down(adapter)); };
  const Setting setting{.command = "linkdown set",
                        .adapter = adapter,
                        .intent = fmt::format("{} the persistent link down", wanted ? "switch on" : "switch off"),
                        .place = "region 23",
                        .operation = "DFC_SetPersistLinkDown",
                        .results = results_of_writes(read_driver(adapter).sli_mode),
                        .read = read,
                        .write = [=] { return DFC_SetPersistLinkDown(adapter, wanted ? 1 : 0); }};
  change(context, setting, read(), link_down_fields(wanted));
}

}  // namespace

void add_linkdown_commands(CommandLine& commands) {
  commands.group("linkdown", "Whether an adapter keeps its link down across restarts",
                 {"vaskdfc linkdown get 0", "vaskdfc linkdown set 0 on"});
  auto arguments = std::make_shared<Arguments>();
  commands.add_for_adapter("linkdown get", "Show whether the link stays down", {"vaskdfc linkdown get 0"}, arguments, get);

  const Command command =
      commands.add_for_adapter("linkdown set", "Keep the link down across restarts (on), or do not (off)",
                               {"vaskdfc linkdown set 0 on", "vaskdfc linkdown set 0 off --yes"}, arguments, set);
  command.add_option("VALUE", arguments->value, "Whether it does").type_name("on|off").required();
}

}  // namespace vaskdfc::tool
