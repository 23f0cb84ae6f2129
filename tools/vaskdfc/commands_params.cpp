// Commands about driver parameters: params list, params show, params set.
#include <fmt/format.h>
#include <vaskdfc.h>

#include <memory>
#include <span>

#include "change_report.h"
#include "command_line.h"
#include "decode.h"
#include "driver_record.h"
#include "parameter_entry.h"
#include "session.h"

namespace vaskdfc::tool {
namespace {

struct Arguments {
  std::string adapter;
  std::string parameter;
  std::string value;
  bool raw = false;
};

struct Table {
  dfc_cfg_table entries{};
  std::vector<Parameter> parameters;
};

std::unique_ptr<Table> read_table(std::uint32_t adapter) {
  auto table = std::make_unique<Table>();
  watch_driver_calls();
  const std::uint32_t count = GetCfgParam(adapter, &table->entries);
  // An empty table and no answer are the same result; only the call itself tells.
  if (last_failed_driver_call()) {
    throw operation_failure("the parameters cannot be read", adapter, "GetCfgParam", Results::kStatus, count);
  }
  for (std::uint32_t i = 0; i < count; ++i) table->parameters.push_back(parse_parameter(i, bytes_of(table->entries.entries[i])));
  return table;
}

Parameter parameter_in(const Table& table, const std::string& name) {
  if (const Parameter* const found = find_parameter(table.parameters, name)) return *found;
  throw usage_failure(fmt::format("PARAMETER: \"{}\" is no parameter of the adapter", name),
                      "\"vaskdfc params list ADAPTER\" shows them; name one by its name or its position");
}

void list(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  Section section = table_like("parameters", "Parameters", parameter_fields({}));
  const auto table = read_table(adapter);
  for (const Parameter& parameter : table->parameters) {
    section.records.push_back(line_of(parameter_fields(parameter)));
  }
  context.print({.command = "params list", .sections = {std::move(section)}});
}

void show(Context& context, const Arguments& arguments) {
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const auto table = read_table(adapter);
  const Parameter parameter = parameter_in(*table, arguments.parameter);
  if (arguments.raw) {
    return context.print(raw_report("params show", adapter, bytes_of(table->entries.entries[parameter.position])));
  }
  auto fields = joined(parameter_fields(parameter), {meaning_field(parameter)});
  context.print({.command = "params show",
                 .sections = {record_section("parameter", "Parameter",
                                             joined({{"adapter", "Adapter", number_cell(adapter)}}, std::move(fields)))}});
}

std::uint32_t value_argument(const Parameter& parameter, const std::string& spelling) {
  if (spelling == "default" && parameter.initial) return *parameter.initial;
  return number_argument("VALUE", spelling);
}

std::vector<Field> value_fields(const Parameter& parameter, const std::optional<std::uint32_t>& value) {
  return {{parameter.name, parameter.name, value ? number_cell(*value) : absent()}};
}

void set(Context& context, const Arguments& arguments) {
  if (arguments.value != "default") number_argument("VALUE", arguments.value);  // wrong whatever the adapter has
  const Session session;
  const std::uint32_t adapter = session.find(arguments.adapter);
  const Parameter before = parameter_in(*read_table(adapter), arguments.parameter);
  const std::uint32_t wanted = value_argument(before, arguments.value);
  const auto read = [=] {
    return value_fields(before, parameter_in(*read_table(adapter), fmt::format("{}", before.position)).value);
  };
  const Setting setting{.command = "params set",
                        .adapter = adapter,
                        .intent = fmt::format("set the parameter {}", before.name),
                        .place = "the parameter table",
                        .operation = "SetCfgParam",
                        .results = Results::kDfc,
                        .read = read,
                        .write = [=] { return SetCfgParam(adapter, before.position, wanted); }};
  change(context, setting, value_fields(before, before.value), value_fields(before, wanted));
  const bool is_changed = before.value != wanted && !context.options().dry_run;
  if (is_changed && before.needs_restart) context.remark("takes effect when the adapter starts again: vaskdfc reset ADAPTER");
}

}  // namespace

void add_params_commands(CommandLine& commands) {
  commands.group("params", "Parameters that the driver keeps for an adapter",
                 {"vaskdfc params list 0", "vaskdfc params show 0 link_speed", "vaskdfc params set 0 lun_queue_depth 64"});
  auto arguments = std::make_shared<Arguments>();
  commands.add_for_adapter("params list", "List the parameters", {"vaskdfc params list 0"}, arguments, list);
  const auto command = [&](const char* name, const char* summary, const std::vector<std::string>& examples, auto action) {
    const Command added = commands.add_for_adapter(name, summary, examples, arguments, action);
    added.add_option("PARAMETER", arguments->parameter, "Its name, or its position in the table").required();
    return added;
  };
  command("params show", "Show a parameter and what it means",
          {"vaskdfc params show 0 link_speed", "vaskdfc params show 0 2 --raw"}, show)
      .add_flag("--raw", arguments->raw, kRawHelp);
  command("params set", "Change a parameter",
          {"vaskdfc params set 0 lun_queue_depth 64", "vaskdfc params set 0 link_speed default --yes"}, set)
      .add_option("VALUE", arguments->value, "The new value, or \"default\"")
      .type_name("VALUE|default")
      .required();
}

}  // namespace vaskdfc::tool
