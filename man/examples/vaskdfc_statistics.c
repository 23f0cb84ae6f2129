#include <inttypes.h>
#include <stdio.h>
#include <vaskdfc.h>

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  /* From now on this process reads what has been counted since. */
  uint32_t result = ResetStatistics(0);
  HbaPortStatistics since;
  if (result == HBA_STATUS_OK) result = GetPortStatistics(0, 0, &since);

  /* The driver itself counts on as before. */
  HbaPortStatistics raw;
  if (result == HBA_STATUS_OK)
    result = GetPortStatistics(0, HBA_RAW_STATISTICS, &raw);
  if (result == HBA_STATUS_OK)
    printf("%" PRId64 " frames of %" PRId64 "\n", since.RxFrames,
           raw.RxFrames);
  DFC_FreeDiagEnv();
  return result == HBA_STATUS_OK ? 0 : 1;
}
