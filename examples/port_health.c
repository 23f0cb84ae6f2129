/*
 * Tells whether the port of an adapter is well: its state, and the counters that stand for trouble on the link.
 *
 *   cc -m32 -std=c99 port_health.c -lvaskdfc -o port_health
 *   ./port_health 0
 *
 * Exit code: 0 the port is online; 1 it is not, or cannot be read; 2 wrong usage, or no such adapter.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vaskdfc.h>

#define STATE_ONLINE 2u /* of FC-HBA */

static int read_port(uint32_t board, HbaPortAttributes* port) {
  /* A failure leaves the record as it was, so nobody may read it then. */
  memset(port, 0, sizeof(*port));
  uint32_t result = GetAdapterPortAttributes(board, 0, port);
  if (result == HBA_STATUS_OK) return 1;
  fprintf(stderr, "adapter %u: cannot read its port: result %u\n", (unsigned)board, (unsigned)result);
  return 0;
}

/* A counter of -1 is one that the adapter does not have. */
static void print_counter(const char* name, int64_t value) {
  if (value == -1) {
    printf("%-20s not supported\n", name);
  } else {
    printf("%-20s %lld\n", name, (long long)value);
  }
}

static int print_counters(uint32_t board) {
  HbaPortStatistics counters;
  uint32_t result = GetPortStatistics(board, 0, &counters);
  if (result != HBA_STATUS_OK) {
    fprintf(stderr, "adapter %u: cannot read its counters: result %u\n", (unsigned)board, (unsigned)result);
    return 0;
  }
  print_counter("link failures", counters.LinkFailureCount);
  print_counter("losses of sync", counters.LossOfSyncCount);
  print_counter("losses of signal", counters.LossOfSignalCount);
  print_counter("invalid words", counters.InvalidTxWordCount);
  print_counter("invalid CRCs", counters.InvalidCRCCount);
  print_counter("dumped frames", counters.DumpedFrames);
  return 1;
}

static int check(uint32_t board) {
  HbaPortAttributes port;
  if (!read_port(board, &port)) return 1;
  printf("%-20s %s\n", "port", port.PortState == STATE_ONLINE ? "online" : "not online");
  printf("%-20s %u\n", "discovered ports", (unsigned)port.NumberofDiscoveredPorts);
  if (!print_counters(board)) return 1;
  return port.PortState == STATE_ONLINE ? 0 : 1;
}

int main(int argc, char** argv) {
  char* end = NULL;
  unsigned long board = argc == 2 ? strtoul(argv[1], &end, 10) : 0;
  if (argc != 2 || end == argv[1] || *end != '\0') {
    fprintf(stderr, "usage: port_health INDEX\n");
    return 2;
  }

  dfc_brd_info boards[DFC_MAX_BOARDS];
  uint32_t count = DFC_InitDiagEnv(boards, DFC_MAX_BOARDS);
  if (count == 0) {
    fprintf(stderr, "no adapter, or no driver\n");
    return 2;
  }
  /* The library does not check indices. */
  int exit_code = 2;
  if (board < count) {
    exit_code = check((uint32_t)board);
  } else {
    fprintf(stderr, "there is no adapter %lu: they are numbered from 0 to %u\n", board, (unsigned)(count - 1));
  }
  DFC_FreeDiagEnv();
  return exit_code;
}
