#include <stdio.h>
#include <vaskdfc.h>

static dfc_cfg_table table; /* too large for some stacks */

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  /* What an entry holds is the driver's. This one begins with a name.
   */
  const uint32_t count = GetCfgParam(0, &table);
  for (uint32_t entry = 0; entry < count; ++entry)
    printf("%2u %.32s\n", entry,
           (const char*)table.entries[entry].bytes);

  /* A position that is not there is refused by the driver. */
  const uint32_t result = SetCfgParam(0, count, 1);
  printf("parameter %u: %s\n", count,
         result == DFC_OK ? "changed" : "refused");
  DFC_FreeDiagEnv();
  return count > 0 ? 0 : 1;
}
