#include <stdio.h>
#include <vaskdfc.h>

static dfc_fcp_prio_list list; /* too large for some stacks */

/* Shows the rules of adapter 1 in the driver's order. */
int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) < 2) return 1;

  uint32_t enabled = 0;
  uint32_t result = DFC_QoSGetGlobalFlag(1, &enabled);
  list.count = sizeof(list.entries) / sizeof(list.entries[0]);
  if (result == DFC_OK) result = DFC_QoSGetConfig(1, &list);
  if (result == DFC_OK) {
    printf("%u rules, %s\n", list.count, enabled ? "on" : "off");
    for (uint32_t rule = 0; rule < list.count; ++rule)
      printf("priority %u\n", list.entries[rule].prio);
  }
  DFC_FreeDiagEnv();
  return result == DFC_OK ? 0 : 1;
}
