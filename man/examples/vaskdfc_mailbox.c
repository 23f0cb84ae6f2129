#include <stdio.h>
#include <vaskdfc.h>

/* Sends the mailbox that tells an adapter's revision (command 0x01). */
int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  /* Adapter 0 is of SLI mode 4: all 64 words, five tries, a second
     apart, while the driver is busy. */
  uint32_t mailbox[DFC_MBOX_WORDS] = {0x0100};
  const uint32_t result =
      DFC_IssueMboxWithRetryV2(0, mailbox, DFC_MBOX_WORDS, 5, 1000);
  if (result == DFC_OK)
    printf("firmware %.32s\n", (const char*)&mailbox[2]);
  else
    printf("result %u, mailbox status 0x%04x\n", result,
           mailbox[0] >> 16);
  DFC_FreeDiagEnv();
  return result == DFC_OK ? 0 : 1;
}
