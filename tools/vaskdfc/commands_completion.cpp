// The command that makes scripts for shells: completion.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>

#include "command_line.h"
#include "completion.h"

namespace vaskdfc::tool {
namespace {

struct Shell {
  const char* name;
  std::string (*script)(const Definitions&);
};
constexpr std::array kShells{Shell{"bash", bash_completion}, Shell{"fish", fish_completion}, Shell{"zsh", zsh_completion}};

void print_script(const Context& context, const CommandLine& commands, const std::string& name) {
  const auto* const shell = std::ranges::find_if(kShells, [&](const Shell& each) { return each.name == name; });
  if (shell == kShells.end()) throw usage_failure(fmt::format("SHELL: \"{}\" is none of {}", name, names_of(kShells, ", ")));
  context.write(shell->script(commands.definitions()));
}

}  // namespace

void add_completion_command(CommandLine& commands) {
  auto shell = std::make_shared<std::string>();
  commands
      .add("completion", "Print a script that completes this command line in a shell",
           {"eval \"$(vaskdfc completion bash)\"", "vaskdfc completion zsh > ~/.zfunc/_vaskdfc",
            "vaskdfc completion fish > ~/.config/fish/completions/vaskdfc.fish"},
           [&commands, shell](const Context& context) { print_script(context, commands, *shell); })
      .add_option("SHELL", *shell, "The shell that reads the script")
      .type_name(names_of(kShells, "|"))
      .required();
}

}  // namespace vaskdfc::tool
