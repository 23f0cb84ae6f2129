#include <stdio.h>
#include <string.h>
#include <vaskdfc.h>

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  uint8_t sent[512], received[sizeof(sent)];
  memset(sent, 0xa5, sizeof(sent));
  const dfc_loopback test = {
      .bufSize = sizeof(sent), .txBuf = sent, .rxBuf = received};

  uint32_t result = DFC_ConfigLoopback(0, DFC_LOOPBACK_MODE_1, 0);
  if (result == DFC_OK) {
    result = DFC_RunLoopbackTest(0, &test);
    DFC_EndLoopback(0); /* whatever happened, or the port stays out */
  }
  /* The library does not compare. */
  const int same =
      result == DFC_OK && memcmp(sent, received, sizeof(sent)) == 0;
  puts(same ? "what came back is what was sent" : "failed");
  DFC_FreeDiagEnv();
  return same ? 0 : 1;
}
