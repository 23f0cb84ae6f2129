#include <stdio.h>
#include <vaskdfc.h>

/* Sets a rule for LUN 1 behind a port, as adapter 0's port sees it. */
int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  HbaPortAttributes local;
  if (GetAdapterPortAttributes(0, 0, &local) != HBA_STATUS_OK) return 1;
  const HbaWwn remote = {{0x50, 0x5a, 0x41, 0, 0x0c, 0, 0x10, 0x01}};

  /* A LUN below 256 is its number, in the low word. */
  const uint32_t result =
      DFC_SetOASLun(0, &local.PortWWN, &remote, 1, 0, 0, 1);
  if (result == DFC_OAS_NO_NODES || result == DFC_OAS_NO_REMOTE_PORT)
    puts("the rule stands, but the remote port is not there");
  else
    puts(result == DFC_OK ? "set" : "not set");
  DFC_FreeDiagEnv();
  return result == DFC_OK ? 0 : 1;
}
