// What the commands are called and what they take, for those who describe them to others.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vaskdfc::tool {

struct ArgumentDefinition {
  std::vector<std::string> names;  // as they are typed, "-f" and "--file"; none if it is told by its position
  std::string help;
  bool takes_value = true;
  bool is_file = false;
  std::vector<std::string> values;  // the values that can be listed
};

struct CommandDefinition {
  std::string name;  // all of its words, as in "region dump"; empty for the tool itself, whose options every command takes
  std::string summary;
  std::vector<ArgumentDefinition> options;
  std::vector<ArgumentDefinition> positionals;
};

// The tool itself, then every group and command, a group before what is in it.
std::vector<CommandDefinition> definitions_of(const CLI::App& tool);

}  // namespace vaskdfc::tool
