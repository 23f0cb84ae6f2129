#include <stdio.h>
#include <vaskdfc.h>

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  uint8_t header[64];
  const uint32_t result = DFC_ReadPciCfg(0, header, 0, sizeof(header));
  if (result == DFC_OK)
    printf("vendor %02x%02x, device %02x%02x\n", header[1], header[0],
           header[3], header[2]);

  /* Only adapters of SLI mode 3 or below offer their memory. */
  uint8_t memory[16];
  if (ReadMem(0, memory, 0, sizeof(memory)) == DFC_ACCESS_NOT_SLI3)
    puts("memory cannot be read in SLI mode 4");
  DFC_FreeDiagEnv();
  return result == DFC_OK ? 0 : 1;
}
