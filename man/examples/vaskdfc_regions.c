#include <stdio.h>
#include <stdlib.h>
#include <vaskdfc.h>

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  dfc_drv_info driver = {0};
  uint8_t* image = NULL;
  uint32_t size = 0;
  uint32_t result = DFC_GetDrvInfo(0, &driver);
  if (result == DFC_OK)
    result = GetRegion23(0, &image, &size, driver.sli_mode);
  if (result == DFC_OK) printf("%.4s, %u bytes\n", (char*)image, size);
  free(image);

  /* A write is done when it can be read again. */
  uint16_t stays_down = 0;
  DFC_SetPersistLinkDown(0, 1);
  if (DFC_GetPersistLinkDown(0, &stays_down) != DFC_OK || !stays_down)
    result = DFC_FAILED;
  DFC_FreeDiagEnv();
  return result == DFC_OK ? 0 : 1;
}
