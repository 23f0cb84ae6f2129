#include "command_line.h"

int main(int argc, char** argv) {
  vaskdfc::tool::CommandLine commands;
  add_hbaapi_commands(commands);
  add_info_commands(commands);
  add_state_commands(commands);
  add_mailbox_commands(commands);
  add_region_commands(commands);
  add_linkdown_commands(commands);
  add_fcoe_commands(commands);
  return commands.run(argc, argv);
}
