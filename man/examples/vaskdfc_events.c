#include <stdio.h>
#include <vaskdfc.h>

enum { kRoom = 16 };

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  /* Takes the events out of the driver's queue: nobody else gets them.
   */
  HbaEvent events[kRoom];
  uint32_t count = kRoom;
  const uint32_t result = GetEventBuffer(0, events, &count);
  if (result == HBA_STATUS_OK)
    printf("%u events, %u lost\n", count, EventMissedCount);
  DFC_FreeDiagEnv();
  return result == HBA_STATUS_OK ? 0 : 1;
}
