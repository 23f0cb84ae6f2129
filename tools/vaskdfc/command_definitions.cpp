#include "command_definitions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace vaskdfc::tool {
namespace {

constexpr const char* kFileType = "FILE";

std::vector<const CLI::App*> parts_of(const CLI::App& command) {
  return command.get_subcommands([](const CLI::App*) { return true; });
}

// Alternatives that exclude each other are a nameless part of their command.
bool is_alternatives(const CLI::App& part) { return part.get_name().empty(); }

// What stands for a value in help texts lists its alternatives as in "on|off"; those in capitals stand for something else.
std::vector<std::string> values_named_by(const std::string& type_name) {
  std::vector<std::string> values;
  std::istringstream alternatives(type_name);
  for (std::string value; std::getline(alternatives, value, '|');) {
    const bool is_capital = std::ranges::none_of(value, [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); });
    if (!is_capital) values.push_back(value);
  }
  return values;
}

ArgumentDefinition definition_of(const CLI::Option& option) {
  ArgumentDefinition definition;
  for (const std::string& name : option.get_snames()) definition.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) definition.names.push_back("--" + name);
  const std::string& help = option.get_description();
  definition.help = help.substr(0, help.find('\n'));
  definition.takes_value = option.get_items_expected_max() > 0;
  if (!definition.takes_value) return definition;
  definition.is_file = option.get_type_name() == kFileType;
  definition.values = values_named_by(option.get_type_name());
  return definition;
}

// The option that asks for help is the tool's, although every command has it.
bool is_inherited(const CLI::App& command, const CLI::Option& option) {
  return command.get_parent() != nullptr && &option == command.get_help_ptr();
}

void add_arguments(const CLI::App& part, CommandDefinition& definition) {
  for (const CLI::Option* option : part.get_options()) {
    if (is_inherited(part, *option)) continue;
    (option->nonpositional() ? definition.options : definition.positionals).push_back(definition_of(*option));
  }
  for (const CLI::App* inner : parts_of(part)) {
    if (is_alternatives(*inner)) add_arguments(*inner, definition);
  }
}

void add_definitions(const CLI::App& command, const std::string& name, std::vector<CommandDefinition>& definitions) {
  CommandDefinition definition{.name = name, .summary = command.get_description(), .options = {}, .positionals = {}};
  add_arguments(command, definition);
  definitions.push_back(definition);
  for (const CLI::App* inner : parts_of(command)) {
    if (!is_alternatives(*inner)) add_definitions(*inner, name + (name.empty() ? "" : " ") + inner->get_name(), definitions);
  }
}

}  // namespace

std::vector<CommandDefinition> definitions_of(const CLI::App& tool) {
  std::vector<CommandDefinition> definitions;
  add_definitions(tool, "", definitions);
  return definitions;
}

}  // namespace vaskdfc::tool
