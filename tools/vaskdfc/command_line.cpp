#include "command_line.h"

#include <fmt/format.h>
#include <unistd.h>
#include <vaskdfc/info.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <utility>

#include "decode.h"
#include "driver_calls.h"
#include "log_help.h"

namespace vaskdfc::tool {
namespace {

constexpr const char* kExitCodes =
    "EXIT CODES\n"
    "  0  done\n"
    "  1  the operation failed\n"
    "  2  wrong usage\n"
    "  3  no adapter or no driver\n";

constexpr const char* kExamples =
    "EXAMPLES\n"
    "  vaskdfc list\n"
    "  vaskdfc show 0\n"
    "  vaskdfc show 10:00:00:11:22:33:44:55 -o json\n"
    "  vaskdfc COMMAND --help\n\n";

std::string examples_text(const std::vector<std::string>& examples) {
  return fmt::format("EXAMPLES\n  {}\n\n", fmt::join(examples, "\n  "));
}

Failure command_missing(const CLI::App& group, const std::string& name) {
  std::vector<std::string> commands;
  for (const CLI::App* command : group.get_subcommands([](const CLI::App*) { return true; }))
    commands.push_back(command->get_name());
  return usage_failure(fmt::format("\"{}\" needs a command: {}", name, fmt::join(commands, ", ")),
                       fmt::format("vaskdfc {} --help", name));
}

void show_driver_call(const DriverCall& call) {
  std::cerr << fmt::format("driver call {}: board {}, platform status 0x{:x}, driver status 0x{:x}, {} us\n", call.callback,
                           call.header.brdno, call.platform_status, call.header.status, call.duration.count());
}

struct NamedForm {
  const char* name;
  Form form;
};
constexpr std::array kForms{NamedForm{"table", Form::kTable}, NamedForm{"json", Form::kJson}, NamedForm{"csv", Form::kCsv},
                            NamedForm{"keyvalue", Form::kKeyValue}};

Form form_named(const std::string& name) {
  const auto* const form = std::ranges::find_if(kForms, [&](const NamedForm& each) { return each.name == name; });
  if (form != kForms.end()) return form->form;
  throw CLI::ValidationError("--output", fmt::format("\"{}\" is none of {}", name, names_of(kForms, ", ")));
}

std::string version_text() {
  char library[DFC_LIB_VERSION_BYTES];
  DFC_GetLibVer(library);
  return fmt::format("vaskdfc {}, library {}", VASKDFC_TOOL_VERSION, library);
}

}  // namespace

void Context::print(const Report& report) const { write(render(report, options_.output)); }

void Context::print_next(const Report& report) {
  const bool is_first = !std::exchange(printed_, true);
  if (options_.output.form == Form::kJson) return write(json_of(report).dump() + "\n");
  OutputOptions output = options_.output;
  if (output.form == Form::kCsv && !is_first) output.header = false;
  const bool apart = output.form != Form::kCsv && !is_first;
  write((apart ? "\n" : "") + render(report, output));
}

void Context::write(const std::string& text) const {
  std::cout << text << std::flush;
  if (std::cout) return;
  throw plain_failure(Exit::kFailed, "the output cannot be written", "check that there is room where standard output goes");
}

void Context::report_failure(const Failure& failure) {
  std::cerr << render_failure(failure, options_.output.form);
  exit_ = failure.exit;
}

void Context::remark(const std::string& text) const { std::cerr << "vaskdfc: " << text_of(text) << "\n"; }

bool Context::may_send(const std::string& request) const {
  if (options_.dry_run) remark("dry run: would " + request);
  return !options_.dry_run;
}

bool Context::may_change(const std::string& change, const std::string& preview) const {
  if (!may_send(change)) return false;
  if (options_.yes) return true;
  if (isatty(STDIN_FILENO) == 0) {
    throw usage_failure(fmt::format("not asked to {}: standard input is no terminal", change),
                        "add --yes to go ahead without asking");
  }
  std::cerr << preview << fmt::format("About to {}. Go ahead? [y/N] ", text_of(change)) << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer == "y" || answer == "Y" || answer == "yes") return true;
  throw plain_failure(Exit::kFailed, fmt::format("did not {}: the answer was not yes", change));
}

std::uint32_t number_argument(const std::string& name, const std::string& spelling, std::uint32_t most) {
  if (const auto number = parse_number(spelling, most)) return *number;
  throw usage_failure(fmt::format("{}: \"{}\" is no number from 0 to {}", name, spelling, most),
                      "numbers are decimal, or hexadecimal with 0x");
}

HbaWwn wwn_argument(const std::string& name, const std::string& spelling, const std::string& hint) {
  if (const auto wwn = parse_wwn(spelling)) return *wwn;
  throw usage_failure(fmt::format("{}: \"{}\" is no WWN", name, spelling), hint);
}

std::uint16_t vlan_argument(const std::string& spelling) {
  constexpr std::uint32_t kMostVlan = 4095;
  return static_cast<std::uint16_t>(number_argument("--vlan", spelling, kMostVlan));
}

std::uint32_t region_argument(const std::string& spelling, const std::vector<std::uint32_t>& allowed) {
  const auto region = parse_number(spelling);
  if (region && std::ranges::count(allowed, *region) != 0) return *region;
  throw usage_failure(fmt::format("REGION: \"{}\" is not {}", spelling, fmt::join(allowed, " or ")),
                      "\"vaskdfc region dump\" shows the bytes of any region");
}

Argument Argument::required(bool required) const {
  option_.required(required);
  return *this;
}

Argument Argument::type_name(const std::string& name) const {
  option_.type_name(name);
  return *this;
}

Argument Argument::expected(int least, int most) const {
  option_.expected(least, most);
  return *this;
}

Argument Argument::excludes(const Argument& other) const {
  option_.excludes(&other.option_);
  return *this;
}

Argument Argument::needs(const Argument& other) const {
  option_.needs(&other.option_);
  return *this;
}

Argument Command::add_option(const std::string& name, std::string& value, const std::string& help) const {
  return Argument(*app_.add_option(name, value, help));
}

Argument Command::add_option(const std::string& name, std::optional<std::string>& value, const std::string& help) const {
  return Argument(*app_.add_option(name, value, help));
}

Argument Command::add_option(const std::string& name, std::vector<std::string>& values, const std::string& help) const {
  return Argument(*app_.add_option(name, values, help));
}

Argument Command::add_flag(const std::string& name, bool& flag, const std::string& help) const {
  return Argument(*app_.add_flag(name, flag, help));
}

Command Command::add_alternatives(const std::string& help) const {
  auto* const group = app_.add_option_group("alternatives", help);
  group->require_option(0, 1);
  return Command(*group);
}

CommandLine::CommandLine()
    : app_(std::make_unique<CLI::App>("Diagnostics and management of Fibre Channel and FCoE host bus adapters.", "vaskdfc")) {
  app_->add_option_function<std::string>(
          "-o,--output", [this](const std::string& name) { options_.output.form = form_named(name); },
          fmt::format("Form of output, {} unless it is given", kForms.front().name))
      ->type_name(names_of(kForms, "|"));
  app_->add_flag_callback(
      "--no-header", [this] { options_.output.header = false; }, "Leave out the titles of tables and the first line of CSV");
  app_->add_flag("--yes", options_.yes, "Do not ask before something changes");
  app_->add_flag("--dry-run", options_.dry_run, "Say what would change, and change nothing");
  app_->add_flag("-v,--verbose", options_.verbose, "Show every call to the driver on standard error");
  app_->add_option("--log", options_.log_mask, "Explain how the library's log is switched on with this mask")->type_name("MASK");
  app_->set_version_flag("--version", version_text);
  app_->require_subcommand(0, 1);
  app_->footer(std::string("\n") + kExamples + kExitCodes);
}

CommandLine::~CommandLine() = default;

CLI::App& CommandLine::subcommand(const std::string& name, const std::string& summary, const std::vector<std::string>& examples) {
  CLI::App* parent = app_.get();
  std::size_t begin = 0;
  for (std::size_t blank = name.find(' '); blank != std::string::npos; blank = name.find(' ', begin)) {
    parent = parent->get_subcommand(name.substr(begin, blank - begin));
    begin = blank + 1;
  }
  CLI::App& added = *parent->add_subcommand(name.substr(begin), summary);
  added.fallthrough();  // global options may follow the command
  added.footer("Global options, which \"vaskdfc --help\" lists, may follow as well.\n\n" + examples_text(examples) + kExitCodes);
  return added;
}

void CommandLine::group(const std::string& name, const std::string& summary, const std::vector<std::string>& examples) {
  CLI::App& added = subcommand(name, summary, examples);
  added.require_subcommand(0, 1);  // none is an error of its own, below
  added.callback([this, &added, name] {
    if (added.get_subcommands().empty()) action_ = [&added, name](Context&) { throw command_missing(added, name); };
  });
}

Command CommandLine::add(const std::string& name, const std::string& summary, const std::vector<std::string>& examples,
                         Action action) {
  CLI::App& command = subcommand(name, summary, examples);
  command.callback([this, action = std::move(action)] { action_ = action; });
  return Command(command);
}

std::vector<CommandDefinition> CommandLine::definitions() const { return definitions_of(*app_); }

int CommandLine::run(int argc, const char* const* argv) {
  try {
    app_->parse(argc, argv);
  } catch (const CLI::Success& help_or_version) {
    std::ostringstream text;
    app_->exit(help_or_version, text, text);
    return static_cast<int>(attempt([&](const Context& context) { context.write(text.str()); }));
  } catch (const CLI::ParseError& error) {
    std::cerr << render_failure(usage_failure(error.what(), "vaskdfc --help, or vaskdfc COMMAND --help"), options_.output.form);
    return static_cast<int>(Exit::kUsage);
  }
  if (options_.verbose) on_driver_call(show_driver_call);
  if (options_.log_mask) {
    action_ = [this](const Context& context) { explain_log(context, *options_.log_mask); };
  } else if (!action_) {
    action_ = [](Context&) { throw usage_failure("no command", "vaskdfc --help lists the commands"); };
  }
  return static_cast<int>(attempt(action_));
}

Exit CommandLine::attempt(const Action& action) const {
  Context context(options_);
  try {
    action(context);
  } catch (const Failure& failure) {
    context.report_failure(failure);
  }
  return context.exit();
}

}  // namespace vaskdfc::tool
