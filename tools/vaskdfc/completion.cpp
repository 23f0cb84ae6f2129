#include "completion.h"

#include <fmt/format.h>

namespace vaskdfc::tool {

std::vector<std::string> Place::patterns() const {
  std::vector<std::string> patterns;
  for (const std::string& word : words) patterns.push_back(fmt::format("{}/{}", command, word));
  return patterns;
}

std::vector<Place> value_options(const Definitions& definitions) {
  std::vector<Place> places;
  for (const CommandDefinition& command : definitions) {
    for (const ArgumentDefinition& option : command.options) {
      if (!option.takes_value) continue;
      places.push_back({.command = command.name.empty() ? "*" : command.name, .words = option.names, .argument = &option});
    }
  }
  return places;
}

std::vector<Place> offered_positionals(const Definitions& definitions) {
  std::vector<Place> places;
  for (const CommandDefinition& command : definitions) {
    for (std::size_t i = 0; i < command.positionals.size(); ++i) {
      const ArgumentDefinition& argument = command.positionals[i];
      if (!argument.is_file && argument.values.empty()) continue;
      places.push_back({.command = command.name, .words = {std::to_string(i)}, .argument = &argument});
    }
  }
  return places;
}

std::vector<std::string> command_patterns(const Definitions& definitions) {
  std::vector<std::string> patterns;
  for (const CommandDefinition& group : definitions) {
    for (const CommandDefinition* command : commands_in(definitions, group)) {
      patterns.push_back(fmt::format("{}/{}", group.name, last_word(*command)));
    }
  }
  return patterns;
}

std::vector<const CommandDefinition*> commands_in(const Definitions& definitions, const CommandDefinition& group) {
  const std::string prefix = group.name.empty() ? "" : group.name + " ";
  std::vector<const CommandDefinition*> commands;
  for (const CommandDefinition& command : definitions) {
    const bool is_inside = !command.name.empty() && command.name.starts_with(prefix);
    if (is_inside && command.name.find(' ', prefix.size()) == std::string::npos) commands.push_back(&command);
  }
  return commands;
}

std::string last_word(const CommandDefinition& command) { return command.name.substr(command.name.rfind(' ') + 1); }

std::string filled(std::string text, std::initializer_list<std::pair<const char*, std::string>> replacements) {
  for (const auto& [marker, replacement] : replacements) {
    const std::string spelling = marker;
    for (auto at = text.find(spelling); at != std::string::npos; at = text.find(spelling, at + replacement.size())) {
      text.replace(at, spelling.size(), replacement);
    }
  }
  return text;
}

}  // namespace vaskdfc::tool
