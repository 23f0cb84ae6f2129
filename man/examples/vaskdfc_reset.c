#include <stdio.h>
#include <vaskdfc.h>

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  /* Comes back at once: the adapter takes its time after that. */
  const uint32_t result = DFC_ResetAdapter(0, 1);
  if (result == DFC_RESET_NO_SUCH_TYPE)
    puts("the driver has no such reset");
  else
    puts(result == DFC_OK ? "reset" : "not reset");
  DFC_FreeDiagEnv();
  return result == DFC_OK ? 0 : 1;
}
