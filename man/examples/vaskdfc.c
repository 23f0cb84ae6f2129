#include <stdio.h>
#include <vaskdfc.h>

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  const uint32_t count = DFC_InitDiagEnv(boards, DFC_MAX_BOARDS);
  if (count == 0) {
    fputs("no adapter, or no driver: see the log\n", stderr);
    return 1;
  }

  for (uint32_t board = 0; board < count; ++board) {
    HbaPortAttributes port;
    const uint32_t result = GetAdapterPortAttributes(board, 0, &port);
    if (result == HBA_STATUS_OK)
      printf("adapter %u: FC id 0x%06x\n", board, port.PortFcId);
    else
      fprintf(stderr, "adapter %u: result %u\n", board, result);
  }
  DFC_FreeDiagEnv();
  return 0;
}
