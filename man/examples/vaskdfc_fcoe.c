#include <stdio.h>
#include <vaskdfc.h>

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  dfc_fcoe_params params = {0};
  uint32_t result = DFC_FCoEGetParams(0, &params);
  if (result == DFC_OK) {
    params.vlanValid = 1;
    params.vlanId = 1002;
    /* A write that the driver refused returns 0 too: read again. */
    DFC_FCoESetParams(0, &params);
    result = DFC_FCoEGetParams(0, &params);
  }
  const int set =
      result == DFC_OK && params.vlanValid && params.vlanId == 1002;
  puts(set ? "VLAN 1002" : "not set");
  DFC_FreeDiagEnv();
  return set ? 0 : 1;
}
