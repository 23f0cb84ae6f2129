#include <stdio.h>
#include <vaskdfc.h>

int main(void) {
  char version[DFC_LIB_VERSION_BYTES];
  DFC_GetLibVer(version);
  printf("library %s\n", version);

  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  /* The driver's texts fill their fields and need not end. */
  dfc_drv_info driver = {0};
  const uint32_t result = DFC_GetDrvInfo(0, &driver);
  if (result == DFC_OK)
    printf("driver %.8s %.16s, SLI mode %u\n", driver.driver_name,
           driver.driver_version, driver.sli_mode);
  DFC_FreeDiagEnv();
  return result == DFC_OK ? 0 : 1;
}
