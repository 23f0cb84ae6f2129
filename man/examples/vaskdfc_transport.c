#include <stdio.h>
#include <vaskdfc.h>

/* Tells which adapters are of which device, and which have failed. */
int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  const uint32_t count = DFC_InitDiagEnv(boards, DFC_MAX_BOARDS);
  if (count == 0) return 1;

  for (uint32_t board = 0; board < count; ++board) {
    const dfc_brd_info* info = &boards[board];
    printf("%u: device %04x%s\n", board, info->pci_id >> 16,
           info->condition < 0 ? ", failed" : "");
  }

  /* Mode 0 asks for the state and changes nothing. */
  printf("adapter 0 is in state %u\n", SetBrdEnv(0, 0));
  DFC_FreeDiagEnv();
  return 0;
}
