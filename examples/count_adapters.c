#include <stdio.h>
#include <vaskdfc.h>

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  uint32_t count = DFC_InitDiagEnv(boards, DFC_MAX_BOARDS);
  printf("%u adapters\n", (unsigned)count);
  if (count > 0) DFC_FreeDiagEnv(); /* without a driver nothing was opened */
  return 0;
}
