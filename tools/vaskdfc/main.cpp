#include <fcntl.h>
#include <unistd.h>

#include "command_line.h"

namespace {

// A file that is opened while a standard one is closed would get its number, and then what is printed. What stands there instead
// cannot be used either, so that whoever prints learns of it.
void hold_standard_files() {
  for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(file, F_GETFD) < 0) open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace

int main(int argc, char** argv) {
  hold_standard_files();
  vaskdfc::tool::CommandLine commands;
  add_hbaapi_commands(commands);
  add_info_commands(commands);
  add_state_commands(commands);
  add_mailbox_commands(commands);
  add_region_commands(commands);
  add_linkdown_commands(commands);
  add_fcoe_commands(commands);
  add_stats_commands(commands);
  add_top_commands(commands);
  add_luns_commands(commands);
  add_npiv_commands(commands);
  add_scsi_commands(commands);
  add_ct_commands(commands);
  add_els_commands(commands);
  add_mgmt_commands(commands);
  add_bindings_commands(commands);
  add_rnid_commands(commands);
  add_events_commands(commands);
  add_link_commands(commands);
  add_params_commands(commands);
  add_memory_commands(commands);
  add_pci_commands(commands);
  add_reset_commands(commands);
  add_loopback_commands(commands);
  add_qos_commands(commands);
  add_oas_commands(commands);
  add_completion_command(commands);
  return commands.run(argc, argv);
}
