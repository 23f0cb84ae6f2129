#include <stdio.h>
#include <vaskdfc.h>

/* Asks the name server for the FC ids of all ports that serve FCP. */
int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  /* CT preamble: revision 1, directory service, name server; GID_FT. */
  static const uint8_t request[20] = {
      1, 0, 0, 0, 0xfc, 2, 0, 0, 0x01, 0x71, 0, 0, [19] = 8};
  static uint8_t reply[DFC_SERVICE_BYTES];
  uint32_t reply_bytes = sizeof(reply);
  const uint32_t result =
      SendCTPassThru(0, request, sizeof(request), reply, &reply_bytes);

  /* After the preamble 4 bytes for each port; 0x8002 is an accept. */
  const int accepted =
      result == DFC_OK && reply[8] == 0x80 && reply[9] == 0x02;
  if (accepted) {
    for (uint32_t at = 16; at + 4 <= reply_bytes; at += 4)
      printf("0x%02x%02x%02x\n", reply[at + 1], reply[at + 2],
             reply[at + 3]);
  }
  DFC_FreeDiagEnv();
  return accepted ? 0 : 1;
}
