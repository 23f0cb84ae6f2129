// Scripts that complete the tool's command line, one for each shell. All of them walk over the words before the cursor, of which
// each is the name of a command, an option that takes the next word, another option, or an argument told by its position.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "command_definitions.h"

namespace vaskdfc::tool {

using Definitions = std::vector<CommandDefinition>;

std::string bash_completion(const Definitions& definitions);
std::string zsh_completion(const Definitions& definitions);
std::string fish_completion(const Definitions& definitions);

// An argument of a command and where it stands: after the names of an option, or at a position, which is a number then.
struct Place {
  std::string command;  // "*" for options that may follow any command
  std::vector<std::string> words;
  const ArgumentDefinition* argument;

  // "region dump/--file", "*/--output", "region dump/1": what the scripts compare with what they have walked over.
  std::vector<std::string> patterns() const;
};

// Every option that takes a value.
std::vector<Place> value_options(const Definitions& definitions);

// Every argument without a name of which something is known that can be offered.
std::vector<Place> offered_positionals(const Definitions& definitions);

// "/list" and "region/dump": every command after the words that lead to it.
std::vector<std::string> command_patterns(const Definitions& definitions);

// What comes first after the words that lead to a group: its commands.
std::vector<const CommandDefinition*> commands_in(const Definitions& definitions, const CommandDefinition& group);
std::string last_word(const CommandDefinition& command);

// Lines of a script, one for each element.
template <typename Elements>
std::string lines_for(const Elements& elements, const auto& line_for) {
  std::string lines;
  for (const auto& element : elements) lines += line_for(element);
  return lines;
}

// A text with every marker in it replaced, one kind after the other.
std::string filled(std::string text, std::initializer_list<std::pair<const char*, std::string>> replacements);

}  // namespace vaskdfc::tool
