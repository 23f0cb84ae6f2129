/*
 * Lists the Fibre Channel and FCoE adapters of this host: index, model, port WWN and state.
 *
 *   cc -m32 -std=c99 list_adapters.c -lvaskdfc -o list_adapters
 *
 * Where the library and the management library that it needs are not in a folder that the system searches, name the folder with
 * -I and -L and, for the linker and for the program, in LD_LIBRARY_PATH.
 *
 * Exit code: 0 all adapters are listed; 1 some adapter could not be read; 2 there is no adapter, or no driver.
 */
#include <stdio.h>
#include <string.h>
#include <vaskdfc.h>

/* FC-HBA's port states, as the driver reports them. */
static const char* state_name(uint32_t state) {
  switch (state) {
    case 2: return "online";
    case 3: return "offline";
    case 4: return "bypassed";
    case 5: return "diagnostics";
    case 6: return "link down";
    case 7: return "error";
    case 8: return "loopback";
    default: return "unknown";
  }
}

static void format_wwn(const HbaWwn* name, char text[24]) {
  const uint8_t* byte = name->wwn;
  snprintf(text, 24, "%02x:%02x:%02x:%02x:%02x:%02x:%02x:%02x", byte[0], byte[1], byte[2], byte[3], byte[4], byte[5], byte[6],
           byte[7]);
}

/* Prints one line and returns 1, or says on standard error what failed and returns 0. */
static int list_adapter(uint32_t board) {
  /* GetAdapterAttributes reports success in every case: a text that is still empty tells that the driver did not answer. */
  HbaAdapterAttributes adapter;
  GetAdapterAttributes(board, &adapter);
  if (adapter.Model[0] == '\0') {
    fprintf(stderr, "adapter %u: the driver did not answer the query for its attributes\n", (unsigned)board);
    return 0;
  }

  /* Cleared first, because the library fills only part of OSDeviceName. */
  HbaPortAttributes port;
  memset(&port, 0, sizeof(port));
  uint32_t status = GetAdapterPortAttributes(board, 0, &port);
  if (status != HBA_STATUS_OK) {
    fprintf(stderr, "adapter %u (%.*s): cannot read the attributes of its port: status %u\n", (unsigned)board,
            (int)sizeof(adapter.Model), adapter.Model, (unsigned)status);
    return 0;
  }

  /* Texts are whole arrays that need not end with a NUL, so every print is bounded by the array. */
  char wwn[24];
  format_wwn(&port.PortWWN, wwn);
  printf("%5u  %-20.*s  %s  %s\n", (unsigned)board, (int)sizeof(adapter.Model), adapter.Model, wwn, state_name(port.PortState));
  return 1;
}

int main(void) {
  /* An adapter is described only if the capacity exceeds its driver board number, so the array has room for all of them. */
  dfc_brd_info boards[DFC_MAX_BOARDS];
  uint32_t count = DFC_InitDiagEnv(boards, DFC_MAX_BOARDS);
  if (count == 0) {
    /* No adapter and no driver look alike here. Nothing is freed, because without a driver nothing was opened. */
    fprintf(stderr, "no adapter found: is the driver loaded, and is it of this library's version?\n");
    return 2;
  }

  uint32_t listed = 0;
  printf("INDEX  %-20s  %-23s  STATE\n", "MODEL", "PORT WWN");
  for (uint32_t board = 0; board < count; ++board) listed += list_adapter(board) ? 1u : 0u;

  DFC_FreeDiagEnv();
  return listed == count ? 0 : 1;
}
