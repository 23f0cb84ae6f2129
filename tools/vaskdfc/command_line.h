// The command line: global options, and the commands that the families register.
#pragma once

#include <vaskdfc/hbaapi.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "command_definitions.h"
#include "failure.h"
#include "output.h"

// The parser's own header is read by command_line.cpp alone: it costs more than all the rest of a command.
namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace vaskdfc::tool {

struct Options {
  OutputOptions output;
  bool yes = false;
  bool dry_run = false;
  bool verbose = false;
  std::optional<std::string> log_mask;  // what was asked about the log
};

// What a command works with.
class Context {
 public:
  explicit Context(const Options& options) : options_(options) {}

  const Options& options() const { return options_; }
  // Writes a report to standard output.
  void print(const Report& report) const;
  // Writes one of several reports: in JSON a line each, in CSV with one header line for all.
  void print_next(const Report& report);
  // Writes text to standard output as it is; a Failure where there is no room for it.
  void write(const std::string& text) const;
  // Writes a failure to standard error and remembers it for the exit code, for commands that carry on.
  void report_failure(const Failure& failure);
  // A remark on standard error.
  void remark(const std::string& text) const;
  // Before a request that does no harm. False in a dry run, which then says what would have been done.
  bool may_send(const std::string& request) const;
  // Before a change: asks the user first, below the preview if there is one. Throws a Failure when the answer is no or when there
  // is nobody to ask.
  bool may_change(const std::string& change, const std::string& preview = "") const;

  Exit exit() const { return exit_; }

 private:
  const Options& options_;
  Exit exit_ = Exit::kDone;
  bool printed_ = false;
};

using Action = std::function<void(Context&)>;

// An argument of a command, to say more about it.
class Argument {
 public:
  explicit Argument(CLI::Option& option) : option_(option) {}

  Argument required(bool required = true) const;
  // What stands for the value in help texts: "FILE" for the name of a file, "on|off" for one of these values, "ADAPTER|all" for any
  // adapter's name or this value. Shells complete it accordingly.
  Argument type_name(const std::string& name) const;
  // How many values it takes.
  Argument expected(int least, int most) const;
  Argument excludes(const Argument& other) const;
  Argument needs(const Argument& other) const;

 private:
  CLI::Option& option_;
};

// A command, to add arguments to it. A name begins with "-" or is that of a positional argument; values go where the second
// parameter says, once the command is given.
class Command {
 public:
  explicit Command(CLI::App& app) : app_(app) {}

  Argument add_option(const std::string& name, std::string& value, const std::string& help) const;
  Argument add_option(const std::string& name, std::optional<std::string>& value, const std::string& help) const;
  Argument add_option(const std::string& name, std::vector<std::string>& values, const std::string& help) const;
  Argument add_flag(const std::string& name, bool& flag, const std::string& help) const;
  // A group of which at most one argument is given.
  Command add_alternatives(const std::string& help) const;

 private:
  CLI::App& app_;
};

// The names of records, as messages and type names list them.
std::string names_of(const auto& named, const std::string& separator) {
  std::string names;
  for (const auto& each : named) names += (names.empty() ? "" : separator) + each.name;
  return names;
}

// How help texts describe the argument that names an adapter.
inline constexpr const char* kAdapterHelp = "Adapter: its index, or its port WWN in any usual spelling";

class CommandLine {
 public:
  CommandLine();
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  // Adds a group of commands, whose names begin with the group's as in "region list". Groups may have groups.
  void group(const std::string& name, const std::string& summary, const std::vector<std::string>& examples);

  // Adds a command; its group, if any, is there already. Its arguments are added to what this returns; `action` runs when the
  // command was given.
  Command add(const std::string& name, const std::string& summary, const std::vector<std::string>& examples, Action action);

  // The same for an action on a record of arguments, which several commands may share.
  template <typename Arguments>
  Command add(const std::string& name, const std::string& summary, const std::vector<std::string>& examples,
              const std::shared_ptr<Arguments>& arguments, void (*action)(Context&, const Arguments&)) {
    return add(name, summary, examples, [arguments, action](Context& context) { action(context, *arguments); });
  }

  // A command about one adapter, whose name is the first argument.
  template <typename Arguments>
  Command add_for_adapter(const std::string& name, const std::string& summary, const std::vector<std::string>& examples,
                          const std::shared_ptr<Arguments>& arguments, void (*action)(Context&, const Arguments&)) {
    Command command = add(name, summary, examples, arguments, action);
    command.add_option("ADAPTER", adapter_in(*arguments), kAdapterHelp).required();
    return command;
  }

  // The tool's options, and all commands that were added.
  std::vector<CommandDefinition> definitions() const;

  // Runs the command that the arguments name and returns the exit code.
  int run(int argc, const char* const* argv);

 private:
  // A command that takes nothing but the adapter needs no record.
  static std::string& adapter_in(std::string& name) { return name; }
  static std::string& adapter_in(auto& arguments) { return arguments.adapter; }

  CLI::App& subcommand(const std::string& name, const std::string& summary, const std::vector<std::string>& examples);
  Exit attempt(const Action& action) const;

  std::unique_ptr<CLI::App> app_;
  Options options_;
  Action action_;
};

// An argument that is a number; a Failure names the argument and what it may be.
std::uint32_t number_argument(const std::string& name, const std::string& spelling, std::uint32_t most = UINT32_MAX);

// An argument that is a WWN.
HbaWwn wwn_argument(const std::string& name, const std::string& spelling,
                    const std::string& hint = "16 hexadecimal digits, as in 10:00:00:11:22:33:44:55");

// The --vlan argument: an id of 12 bits.
std::uint16_t vlan_argument(const std::string& spelling);

// The REGION argument: one of the regions that the command knows.
std::uint32_t region_argument(const std::string& spelling, const std::vector<std::uint32_t>& allowed);

// The commands of each family.
void add_info_commands(CommandLine& commands);
void add_hbaapi_commands(CommandLine& commands);
void add_state_commands(CommandLine& commands);
void add_mailbox_commands(CommandLine& commands);
void add_region_commands(CommandLine& commands);
void add_region_write_commands(CommandLine& commands);
void add_linkdown_commands(CommandLine& commands);
void add_fcoe_commands(CommandLine& commands);
void add_fcoe_connect_commands(CommandLine& commands);
void add_stats_commands(CommandLine& commands);
void add_top_commands(CommandLine& commands);
void add_luns_commands(CommandLine& commands);
void add_npiv_commands(CommandLine& commands);
void add_scsi_commands(CommandLine& commands);
void add_ct_commands(CommandLine& commands);
void add_bindings_commands(CommandLine& commands);
void add_rnid_commands(CommandLine& commands);
void add_events_commands(CommandLine& commands);
void add_scsi_raw_commands(CommandLine& commands);
void add_scsi_transfer_commands(CommandLine& commands);
void add_els_commands(CommandLine& commands);
void add_mgmt_commands(CommandLine& commands);
void add_link_commands(CommandLine& commands);
void add_params_commands(CommandLine& commands);
void add_memory_commands(CommandLine& commands);
void add_pci_commands(CommandLine& commands);
void add_reset_commands(CommandLine& commands);
void add_loopback_commands(CommandLine& commands);
void add_qos_commands(CommandLine& commands);
void add_oas_commands(CommandLine& commands);
void add_completion_command(CommandLine& commands);

}  // namespace vaskdfc::tool
