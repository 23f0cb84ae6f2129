// Fish knows of a command's options by itself; it needs to be told where it is.
#include <fmt/format.h>

#include "completion.h"

namespace vaskdfc::tool {
namespace {

constexpr const char* kScript = R"(# Completes vaskdfc in fish. Made by "vaskdfc completion fish".
function __vaskdfc_at --argument-names wanted wanted_position
    set -l at ''
    set -l option ''
    set -l position 0
    set -l words (commandline -opc)
    set -e words[1]
    for word in $words
        if test -n "$option"
            set option ''
            continue
        end
        switch "$at/$word"
@VALUE_OPTIONS@            case '*/-*'
@COMMANDS@            case '*'
                set position (math $position + 1)
        end
    end
    test "$at" = "$wanted"; or return 1
    test -z "$wanted_position"; or test $position -eq $wanted_position
end

complete -c vaskdfc -f
@OPTIONS@@GROUPS@@POSITIONALS@)";

std::string quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "'";
}

std::string arm(const std::vector<std::string>& patterns, const std::string& action) {
  std::vector<std::string> cases;
  for (const std::string& pattern : patterns) cases.push_back(quoted(pattern));
  return fmt::format("            case {}\n                {}\n", fmt::join(cases, " "), action);
}

std::string completion(const std::string& condition, const std::string& what) {
  return fmt::format("complete -c vaskdfc{} {}\n", condition.empty() ? "" : " -n " + quoted(condition), what);
}

std::string condition(const std::string& command) { return "__vaskdfc_at " + quoted(command); }
std::string condition(const std::string& command, const std::string& position) { return condition(command) + " " + position; }

std::string value_rule(const ArgumentDefinition& argument) {
  return argument.is_file ? "-F" : "-a " + quoted(fmt::format("{}", fmt::join(argument.values, " ")));
}

// What is no file and has no values to list can only be typed.
std::string option_rule(const ArgumentDefinition& option) {
  if (!option.takes_value) return "";
  if (option.is_file) return "-r " + value_rule(option) + " ";
  return "-x " + (option.values.empty() ? "" : value_rule(option) + " ");
}

std::string option_line(const CommandDefinition& command, const ArgumentDefinition& option) {
  std::string what;
  for (const std::string& name : option.names) {
    const bool is_long = name.starts_with("--");
    what += fmt::format("{} {} ", is_long ? "-l" : "-s", name.substr(is_long ? 2 : 1));
  }
  return completion(command.name.empty() ? "" : condition(command.name), what + option_rule(option) + "-d " + quoted(option.help));
}

std::string option_lines(const CommandDefinition& command) {
  return lines_for(command.options, [&](const ArgumentDefinition& option) { return option_line(command, option); });
}

std::string group_lines(const Definitions& definitions, const CommandDefinition& group) {
  return lines_for(commands_in(definitions, group), [&](const CommandDefinition* command) {
    return completion(condition(group.name, "0"), fmt::format("-a {} -d {}", last_word(*command), quoted(command->summary)));
  });
}

}  // namespace

std::string fish_completion(const Definitions& definitions) {
  const auto option_arm = [](const Place& place) { return arm(place.patterns(), "set option $word"); };
  const auto command_arm = [](const std::string& pattern) { return arm({pattern}, "set at (string trim \"$at $word\")"); };
  const auto offer_commands = [&](const CommandDefinition& group) { return group_lines(definitions, group); };
  const auto offer_value = [](const Place& place) {
    return completion(condition(place.command, place.words.front()), value_rule(*place.argument));
  };
  return filled(kScript, {{"@VALUE_OPTIONS@", lines_for(value_options(definitions), option_arm)},
                          {"@COMMANDS@", lines_for(command_patterns(definitions), command_arm)},
                          {"@OPTIONS@", lines_for(definitions, option_lines)},
                          {"@GROUPS@", lines_for(definitions, offer_commands)},
                          {"@POSITIONALS@", lines_for(offered_positionals(definitions), offer_value)}});
}

}  // namespace vaskdfc::tool
