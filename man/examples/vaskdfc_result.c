#include <stdio.h>
#include <vaskdfc.h>

/* Names what may go wrong with a list. */
static const char* meaning(uint32_t result) {
  switch (result) {
    case DFC_OK: return "done";
    case DFC_TOO_SMALL: return "there is more than was asked for";
    case DFC_UNSUPPORTED: return "not for this adapter";
    case DFC_NO_MEMORY: return "no memory";
    default: return "failed; the log has the driver's status";
  }
}

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  dfc_fcf_list list = {.numEntries = 1};
  puts(meaning(DFC_FCoEGetFCFList(0, &list)));
  DFC_FreeDiagEnv();
  return 0;
}
