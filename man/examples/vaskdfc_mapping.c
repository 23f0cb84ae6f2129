#include <stdio.h>
#include <stdlib.h>
#include <vaskdfc.h>

enum { kUnits = 64 };

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  /* The record has one entry; the others follow it. */
  HbaFcpTargetMapping* mapping =
      calloc(1, 4 + kUnits * sizeof(HbaFcpScsiEntry));
  if (mapping == NULL) return 1;
  mapping->NumberOfEntries = kUnits;
  const uint32_t result = GetFcpTargetMapping(0, mapping);
  if (result == HBA_STATUS_OK) {
    const HbaFcpScsiEntry* entry = mapping->entry;
    for (uint32_t unit = 0; unit < mapping->NumberOfEntries; ++unit)
      printf("%.256s\n", entry[unit].ScsiId.OSDeviceName);
  } else if (result == HBA_STATUS_ERROR_MORE_DATA) {
    printf("room for %u is needed\n", mapping->NumberOfEntries);
  }
  free(mapping);
  DFC_FreeDiagEnv();
  return result == HBA_STATUS_OK ? 0 : 1;
}
