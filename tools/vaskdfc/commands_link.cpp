// Commands about what the driver keeps of an adapter's link, nodes, I/O and vital product data: link, nodes, iostat, vpd.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <span>

#include "command_line.h"
#include "driver_record.h"
#include "link_records.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  std::optional<std::string> selector;
  bool raw = false;
};

Field adapter_field(std::uint32_t adapter) { return {"adapter", "Adapter", number_cell(adapter)}; }

void link(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  dfc_link_info info{};
  watch_driver_calls();
  const std::uint32_t result = DFC_GetLinkInfo(adapter, &info);
  if (result != DFC_OK) throw operation_failure("the link cannot be read", adapter, "DFC_GetLinkInfo", Results::kDfc, result);
  if (arguments.raw) return context.print(raw_report("link", adapter, bytes_of(info)));
  context.print({.command = "link",
                 .sections = {record_section("link", "Link", joined({adapter_field(adapter)}, link_fields(bytes_of(info))))}});
}

void nodes(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto table = std::make_unique<dfc_node_table>();
  watch_driver_calls();
  const std::uint32_t count = GetNodeInfo(adapter, table.get());
  // No nodes and no answer are the same result; only the call itself tells.
  if (last_failed_driver_call()) {
    throw operation_failure("the nodes cannot be read", adapter, "GetNodeInfo", Results::kStatus, count);
  }
  if (arguments.raw) return context.print(raw_report("nodes", adapter, part(bytes_of(*table), 0, count * sizeof(dfc_node_info))));
  Section section = table_like("nodes", "Nodes", node_fields({}));
  for (const dfc_node_info& node : std::span(table->entries).first(count)) {
    section.records.push_back(line_of(node_fields(bytes_of(node))));
  }
  context.print({.command = "nodes", .sections = {std::move(section)}});
}

void iostat(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  dfc_io_info info{};
  watch_driver_calls();
  const std::uint32_t result = GetIOinfo(adapter, &info);
  if (result != DFC_OK) throw operation_failure("the I/O counters cannot be read", adapter, "GetIOinfo", Results::kDfc, result);
  if (arguments.raw) return context.print(raw_report("iostat", adapter, bytes_of(info)));
  context.print(
      {.command = "iostat", .sections = {record_section("io", "I/O", {adapter_field(adapter)}), io_section(bytes_of(info))}});
}

dfc_vpd_info read_vpd(std::uint32_t adapter, std::uint32_t selector) {
  dfc_vpd_info info{};
  info.selector = selector;
  watch_driver_calls();
  const std::uint32_t result = GetVPDInfo(adapter, &info);
  if (result == DFC_OK) return info;
  throw operation_failure("the vital product data cannot be read", adapter, "GetVPDInfo", Results::kVpd, result);
}

void vpd(Context& context, const Arguments& arguments) {
  constexpr std::uint32_t kMostSelectors = 64;  // what a driver says there are is not to keep anybody busy
  const std::uint32_t first = number_argument("--selector", arguments.selector.value_or("0"));
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const dfc_vpd_info info = read_vpd(adapter, first);
  if (arguments.raw) return context.print(raw_report("vpd", adapter, bytes_of(info)));
  Section texts = vpd_texts_section();
  add_vpd_texts(texts, bytes_of(info));
  const std::uint32_t end = arguments.selector ? 0 : std::min(vpd_selectors(bytes_of(info)), kMostSelectors);
  for (std::uint32_t selector = 1; selector < end; ++selector) add_vpd_texts(texts, bytes_of(read_vpd(adapter, selector)));
  context.print(
      {.command = "vpd",
       .sections = {record_section("vpd", "Vital product data", joined({adapter_field(adapter)}, vpd_fields(bytes_of(info)))),
                    std::move(texts)}});
}

}  // namespace

void add_link_commands(CommandLine& commands) {
  auto arguments = std::make_shared<Arguments>();
  const auto command = [&](const char* name, const char* summary, const std::vector<std::string>& examples, auto action) {
    const Command added = commands.add_for_adapter(name, summary, examples, arguments, action);
    added.add_flag("--raw", arguments->raw, kRawHelp);
    return added;
  };
  command("link", "Show the link as the driver sees it", {"vaskdfc link 0", "vaskdfc link 0 --raw"}, link);
  command("nodes", "List the remote nodes that the driver knows", {"vaskdfc nodes 0", "vaskdfc nodes 0 -o csv"}, nodes);
  command("iostat", "Show the driver's I/O counters", {"vaskdfc iostat 0", "vaskdfc iostat 0 -o json"}, iostat);
  command("vpd", "Show the vital product data", {"vaskdfc vpd 0", "vaskdfc vpd 0 --selector 2"}, vpd)
      .add_option("--selector", arguments->selector, "What to ask for, a number of the driver's; everything unless it is given")
      .type_name("N");
}

}  // namespace vaskdfc::tool
