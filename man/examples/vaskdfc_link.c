#include <stdio.h>
#include <vaskdfc.h>

static dfc_node_table nodes; /* too large for some stacks */

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  const uint32_t count = GetNodeInfo(0, &nodes);
  printf("%u remote nodes\n", count);

  /* Selector 0 is what this driver answers first. */
  dfc_vpd_info vpd = {.selector = 0};
  const uint32_t result = GetVPDInfo(0, &vpd);
  if (result == DFC_OK)
    printf("%.80s\n", vpd.text_260);
  else if (result == DFC_VPD_BAD0084)
    puts("the driver has nothing under this selector");
  else
    puts("the vital product data cannot be read");
  DFC_FreeDiagEnv();
  return result == DFC_OK ? 0 : 1;
}
