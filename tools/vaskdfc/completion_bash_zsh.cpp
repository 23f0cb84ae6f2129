// The two shells differ in how a completion is asked for and offered; what is written between that reads the same in both.
#include <fmt/format.h>

#include "completion.h"

namespace vaskdfc::tool {
namespace {

// Words are taken from the line itself, because readline parts them at the colons of a WWN.
constexpr const char* kBashScript = R"(# Completes vaskdfc in bash. Made by "vaskdfc completion bash".
_vaskdfc() {
  local line=${COMP_LINE:0:COMP_POINT} at='' option='' position=0 current='' word
  local -a words offered
  read -ra words <<<"$line"
  if [[ $line != *[[:blank:]] ]]; then
    current=${words[-1]}
    unset 'words[-1]'
  fi
  for word in "${words[@]:1}"; do
    if [[ $option ]]; then
      option=''
      continue
    fi
    case $at/$word in
@VALUE_OPTIONS@      */-*) ;;
@COMMANDS@      *) position=$((position + 1)) ;;
    esac
  done
  if [[ ! $option && $current == --*=* ]]; then
    option=${current%%=*}
    current=${current#*=}
  fi

  COMPREPLY=()
  if [[ $option ]]; then
    case $at/$option in
@OPTION_VALUES@    esac
  elif [[ $current == -* ]]; then
    offered=(@GLOBAL_OPTIONS@)
    case $at in
@OPTIONS@    esac
  else
    case $at/$position in
@GROUPS@@POSITIONALS@    esac
  fi
  mapfile -t COMPREPLY < <(compgen -W "${offered[*]}" -- "$current")
}
complete -F _vaskdfc vaskdfc
)";

constexpr const char* kZshScript = R"(#compdef vaskdfc
# Completes vaskdfc in zsh. Made by "vaskdfc completion zsh"; a folder of $fpath may hold it under the name _vaskdfc.
_vaskdfc() {
  local at='' option='' word
  local -i position=0
  local -a offered
  for word in "${(@)words[2,CURRENT-1]}"; do
    if [[ -n $option ]]; then
      option=''
      continue
    fi
    case $at/$word in
@VALUE_OPTIONS@      */-*) ;;
@COMMANDS@      *) position+=1 ;;
    esac
  done
  if [[ -z $option && $PREFIX == --*=* ]]; then
    option=${PREFIX%%=*}
    compset -P '*='
  fi

  if [[ -n $option ]]; then
    case $at/$option in
@OPTION_VALUES@    esac
    _describe -t values value offered
  elif [[ $PREFIX == -* ]]; then
    offered=(@GLOBAL_OPTIONS@)
    case $at in
@OPTIONS@    esac
    _describe -o -t options option offered
  else
    case $at/$position in
@GROUPS@@POSITIONALS@    esac
    _describe -t arguments argument offered
  fi
}
if [[ ${funcstack[1]} == _vaskdfc ]]; then
  _vaskdfc "$@"
else
  compdef _vaskdfc vaskdfc
fi
)";

struct Dialect {
  const char* script;
  const char* complete_file;
  std::string (*offer)(const std::string& word, const std::string& help);
};

std::string bash_offer(const std::string& word, const std::string&) { return word; }

// The first colon parts what is offered from what it is.
std::string zsh_offer(const std::string& word, const std::string& help) {
  const std::string offer = filled(word, {{":", "\\:"}}) + (help.empty() ? "" : ":" + help);
  return "'" + filled(offer, {{"'", "'\\''"}}) + "'";
}

// Readline completes the names of files better than a script does.
constexpr Dialect kBash{.script = kBashScript, .complete_file = "compopt -o default; return", .offer = bash_offer};
constexpr Dialect kZsh{.script = kZshScript, .complete_file = "_files; return", .offer = zsh_offer};

// No name of a command or an option has a character that needs quoting, but for the blanks between words.
std::string arm(const std::vector<std::string>& patterns, const std::string& action) {
  std::vector<std::string> escaped;
  for (const std::string& pattern : patterns) escaped.push_back(filled(pattern, {{" ", "\\ "}}));
  return fmt::format("      {}) {} ;;\n", fmt::join(escaped, " | "), action);
}

std::string value_arm(const Dialect& dialect, const Place& place) {
  if (place.argument->is_file) return arm(place.patterns(), dialect.complete_file);
  std::vector<std::string> offers;
  for (const std::string& value : place.argument->values) offers.push_back(dialect.offer(value, ""));
  return arm(place.patterns(), fmt::format("offered=({})", fmt::join(offers, " ")));
}

std::string offered_options(const Dialect& dialect, const CommandDefinition& command) {
  std::vector<std::string> offers;
  for (const ArgumentDefinition& option : command.options) {
    for (const std::string& name : option.names) offers.push_back(dialect.offer(name, option.help));
  }
  return fmt::format("{}", fmt::join(offers, " "));
}

std::string options_arm(const Dialect& dialect, const CommandDefinition& command) {
  if (command.name.empty() || command.options.empty()) return "";
  return arm({command.name}, fmt::format("offered+=({})", offered_options(dialect, command)));
}

std::string group_arm(const Dialect& dialect, const Definitions& definitions, const CommandDefinition& group) {
  std::vector<std::string> offers;
  for (const CommandDefinition* command : commands_in(definitions, group)) {
    offers.push_back(dialect.offer(last_word(*command), command->summary));
  }
  return offers.empty() ? "" : arm({group.name + "/0"}, fmt::format("offered=({})", fmt::join(offers, " ")));
}

std::string script_in(const Dialect& dialect, const Definitions& definitions) {
  const auto option_arm = [](const Place& place) { return arm(place.patterns(), "option=$word"); };
  const auto command_arm = [](const std::string& pattern) { return arm({pattern}, "at=${at:+$at }$word"); };
  const auto offer_value = [&](const Place& place) { return value_arm(dialect, place); };
  const auto offer_options = [&](const CommandDefinition& command) { return options_arm(dialect, command); };
  const auto offer_commands = [&](const CommandDefinition& group) { return group_arm(dialect, definitions, group); };
  return filled(dialect.script, {{"@VALUE_OPTIONS@", lines_for(value_options(definitions), option_arm)},
                                 {"@COMMANDS@", lines_for(command_patterns(definitions), command_arm)},
                                 {"@OPTION_VALUES@", lines_for(value_options(definitions), offer_value)},
                                 {"@GLOBAL_OPTIONS@", offered_options(dialect, definitions.front())},
                                 {"@OPTIONS@", lines_for(definitions, offer_options)},
                                 {"@GROUPS@", lines_for(definitions, offer_commands)},
                                 {"@POSITIONALS@", lines_for(offered_positionals(definitions), offer_value)}});
}

}  // namespace

std::string bash_completion(const Definitions& definitions) { return script_in(kBash, definitions); }
std::string zsh_completion(const Definitions& definitions) { return script_in(kZsh, definitions); }

}  // namespace vaskdfc::tool
