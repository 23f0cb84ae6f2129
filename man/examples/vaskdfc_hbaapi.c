#include <stdio.h>
#include <vaskdfc.h>

/* Lists the ports that adapter 0 has discovered. */
int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  RefreshInformation(0);
  uint32_t index = 0;
  uint32_t result = HBA_STATUS_OK;
  while (result == HBA_STATUS_OK) {
    HbaPortAttributes port;
    result = GetDiscoveredPortAttributes(0, 0, index, &port);
    if (result == HBA_STATUS_OK)
      printf("%u: FC id 0x%06x\n", index++, port.PortFcId);
  }
  if (result == HBA_STATUS_ERROR_STALE_DATA)
    puts("the fabric has changed: begin again");
  DFC_FreeDiagEnv();
  return result == HBA_STATUS_ERROR_ILLEGAL_INDEX ? 0 : 1;
}
