/*
 * Shows the events of all adapters: takes what the driver has queued, once a second.
 *
 *   cc -m32 -std=c99 watch_events.c -lvaskdfc -o watch_events
 *   ./watch_events 60
 *
 * The argument says how often events are taken, 1 unless it is given. Exit code: 0 done; 1 the events of some adapter could not
 * be taken; 2 there is no adapter, or no driver.
 */
#define _POSIX_C_SOURCE 200809L
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>
#include <vaskdfc.h>

/* The driver's queue is no longer than this. */
#define ROOM 32u

/* The event information of FC-HBA. */
struct event_information {
  uint32_t code;
  uint32_t fc_id;    /* of the adapter's port */
  uint32_t affected; /* of an RSCN: the port that it is about */
  uint32_t reserved[2];
};

static void print_event(uint32_t board, const HbaEvent* event) {
  struct event_information information;
  memcpy(&information, event->bytes, sizeof(information));
  printf("adapter %u: ", (unsigned)board);
  switch (information.code) {
    case 1: printf("LIP\n"); break;
    case 2: printf("link up\n"); break;
    case 3: printf("link down\n"); break;
    case 5: printf("RSCN about 0x%06x\n", (unsigned)information.affected); break;
    default: printf("event 0x%x\n", (unsigned)information.code); break;
  }
}

/* Events that are taken are gone: two programs that watch one adapter each see a part of them. */
static int take_events(uint32_t board) {
  HbaEvent events[ROOM];
  memset(events, 0, sizeof(events)); /* a driver may count more than it writes */
  uint32_t count = ROOM;             /* in: room; out: the driver's count, which the library passes on as it is */
  uint32_t result = GetEventBuffer(board, events, &count);
  if (result != HBA_STATUS_OK) {
    fprintf(stderr, "adapter %u: cannot take its events: result %u\n", (unsigned)board, (unsigned)result);
    return 0;
  }
  /* One word for the whole process: read it before the next call, of whichever adapter. */
  if (EventMissedCount > 0) printf("adapter %u: %u events were lost\n", (unsigned)board, (unsigned)EventMissedCount);
  if (count > ROOM) count = ROOM;
  for (uint32_t i = 0; i < count; ++i) print_event(board, &events[i]);
  fflush(stdout);
  return 1;
}

int main(int argc, char** argv) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  uint32_t count = DFC_InitDiagEnv(boards, DFC_MAX_BOARDS);
  if (count == 0) {
    fprintf(stderr, "no adapter, or no driver\n");
    return 2;
  }

  int times = argc > 1 ? atoi(argv[1]) : 1;
  int all = 1;
  for (int pass = 0; pass < times; ++pass) {
    if (pass > 0) sleep(1);
    for (uint32_t board = 0; board < count; ++board) all &= take_events(board);
  }
  DFC_FreeDiagEnv();
  return all ? 0 : 1;
}
