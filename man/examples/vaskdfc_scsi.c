#include <stdio.h>
#include <vaskdfc.h>

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  if (DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0) return 1;

  /* Standard INQUIRY data of LUN 0 behind a port of the fabric. */
  const HbaWwn target = {{0x50, 0x5a, 0x41, 0, 0x0c, 0, 0x10, 0x01}};
  uint8_t data[36] = {0};
  uint32_t data_bytes = sizeof(data);
  uint8_t sense[DFC_SCSI_SENSE_BYTES] = {0};
  uint32_t sense_bytes = 0;
  const uint32_t result = SendScsiInquiry(
      0, &target, 0, 0, 0, data, &data_bytes, sense, &sense_bytes);

  /* A check condition is a completed command: only sense tells it. */
  const int good = result == HBA_STATUS_OK && sense_bytes == 0;
  if (good) printf("%.8s %.16s\n", (char*)data + 8, (char*)data + 16);
  DFC_FreeDiagEnv();
  return good ? 0 : 1;
}
