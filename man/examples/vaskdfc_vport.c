#include <stdio.h>
#include <stdlib.h>
#include <vaskdfc.h>

enum { kPorts = 32 };

/* Counts the virtual ports of adapter 1. */
int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) < 2) return 1;

  uint32_t ready = 0;
  uint32_t result = DFC_NPIVReadyTest(1, &ready);
  dfc_vport_list* list =
      calloc(1, 4 + kPorts * sizeof(dfc_vport_entry));
  if (list == NULL) return 1;
  list->numEntries = kPorts;
  if (result == DFC_OK) result = DFC_VPGetList(1, list);
  if (result == DFC_OK)
    printf("%sready, %u virtual ports\n", ready ? "" : "not ",
           list->numEntries);
  free(list);
  DFC_FreeDiagEnv();
  return result == DFC_OK ? 0 : 1;
}
