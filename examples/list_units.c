/*
 * Lists the logical units that an adapter has mapped, and asks each what it is: a list of unknown length, SCSI commands, sense.
 *
 *   cc -m32 -std=c99 list_units.c -lvaskdfc -o list_units
 *   ./list_units 0
 *
 * Exit code: 0 all units are listed; 1 the list or some unit could not be read; 2 no such adapter.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vaskdfc.h>

#define MOST_UNITS 1024u /* as many as the library receives */

/* A mapping with room for so many units; its caller frees it. */
static HbaFcpTargetMapping* mapping_for(uint32_t room) {
  size_t bytes = offsetof(HbaFcpTargetMapping, entry) + room * sizeof(HbaFcpScsiEntry);
  HbaFcpTargetMapping* mapping = calloc(1, bytes);
  if (mapping) mapping->NumberOfEntries = room;
  return mapping;
}

/* The mapping, or NULL. */
static HbaFcpTargetMapping* read_mapping(uint32_t board) {
  uint32_t room = 16;
  for (;;) {
    HbaFcpTargetMapping* mapping = mapping_for(room);
    if (!mapping) return NULL;
    uint32_t result = GetFcpTargetMapping(board, mapping);
    if (result == HBA_STATUS_OK) return mapping;

    /* Where it did not fit, the count says how much there is. Units may have come since, so this may happen again. */
    uint32_t wanted = mapping->NumberOfEntries;
    free(mapping);
    if (result != HBA_STATUS_ERROR_MORE_DATA || wanted <= room || wanted > MOST_UNITS) {
      fprintf(stderr, "adapter %u: cannot read its mapping: result %u\n", (unsigned)board, (unsigned)result);
      return NULL;
    }
    room = wanted;
  }
}

/* Prints one line; returns whether the unit answered. */
static int list_unit(uint32_t board, const HbaFcpScsiEntry* unit) {
  uint64_t lun = 0; /* in memory as it travels, so it is copied and not computed */
  memcpy(&lun, unit->FcpId.FcpLun, sizeof(lun));

  uint8_t data[96];
  uint8_t sense[DFC_SCSI_SENSE_BYTES]; /* as many may come, whatever the count below says */
  uint32_t data_bytes = sizeof(data);
  uint32_t sense_bytes = 0;
  memset(data, 0, sizeof(data));
  uint32_t result = SendScsiInquiry(board, &unit->FcpId.PortWWN, lun, 0, 0, data, &data_bytes, sense, &sense_bytes);

  printf("%u:%u:%u  ", (unsigned)unit->ScsiId.ScsiBusNumber, (unsigned)unit->ScsiId.ScsiTargetNumber,
         (unsigned)unit->ScsiId.ScsiOSLun);
  if (result != HBA_STATUS_OK) {
    printf("no answer: result %u\n", (unsigned)result);
    return 0;
  }
  /* A refused command is a completed one. In sense of the fixed format byte 2 holds the key. */
  if (sense_bytes > 2) {
    printf("refused: sense key %u\n", sense[2] & 0xFu);
    return 0;
  }
  printf("%.8s %.16s %.4s\n", (const char*)data + 8, (const char*)data + 16, (const char*)data + 32);
  return 1;
}

static int list_units(uint32_t board) {
  HbaFcpTargetMapping* mapping = read_mapping(board);
  if (!mapping) return 1;
  int all = 1;
  for (uint32_t i = 0; i < mapping->NumberOfEntries; ++i) all &= list_unit(board, &mapping->entry[i]);
  free(mapping);
  return all ? 0 : 1;
}

int main(int argc, char** argv) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  uint32_t count = DFC_InitDiagEnv(boards, DFC_MAX_BOARDS);
  if (count == 0) {
    fprintf(stderr, "no adapter, or no driver\n");
    return 2;
  }

  int board = argc == 2 ? atoi(argv[1]) : -1;
  int exit_code = 2;
  if (board >= 0 && (uint32_t)board < count) {
    exit_code = list_units((uint32_t)board);
  } else {
    fprintf(stderr, "usage: list_units INDEX, from 0 to %u\n", (unsigned)(count - 1));
  }
  DFC_FreeDiagEnv();
  return exit_code;
}
