/*
 * A plain C application, linked with the library as any other: it runs from the first call to the last and exits with 0 only
 * if every answer is the promised one.
 */
#include <stdio.h>
#include <string.h>
#include <vaskdfc.h>

static int failures;

static void expect(int holds, const char* promise) {
  if (holds) return;
  fprintf(stderr, "not so: %s\n", promise);
  ++failures;
}

static void check_without_initialisation(void) {
  char version[DFC_LIB_VERSION_BYTES];
  uint32_t length = DFC_GetLibVer(version);
  expect(strcmp(version, "11.4.1080.0") == 0, "the library's version is 11.4.1080.0");
  expect(length == strlen(version), "DFC_GetLibVer returns the length of the text");

  uint32_t major = 0;
  uint32_t minor = 1;
  expect(GetDfcRev(&major, &minor) == 0 && major == 4 && minor == 0, "the interface's revision is 4.0");
  expect(DFC_VPDelete(0, NULL) == DFC_UNSUPPORTED, "an entry point without a function returns DFC_UNSUPPORTED");
  expect(trel_isLeap(2024) == 1 && trel_isLeap(2100) == 0, "2024 is a leap year and 2100 is none");
}

static void check_adapters(void) {
  static dfc_brd_info boards[DFC_MAX_BOARDS];
  uint32_t count = DFC_InitDiagEnv(boards, DFC_MAX_BOARDS);
  expect(count > 0 && count <= DFC_MAX_BOARDS, "there are adapters");

  for (uint32_t board = 0; board < count; ++board) {
    static HbaAdapterAttributes adapter;
    HbaPortAttributes port;
    memset(&port, 0, sizeof(port));
    expect(boards[board].constant_10 == 10, "every adapter is described");
    expect(GetAdapterAttributes(board, &adapter) == HBA_STATUS_OK && adapter.Model[0] != '\0', "every adapter tells its model");
    expect(GetAdapterPortAttributes(board, 0, &port) == HBA_STATUS_OK, "every adapter has a port");
  }

  dfc_interface_rev driver;
  dfc_interface_rev library;
  expect(CallVer(&driver, &library) == 0 && driver.version == library.version, "library and driver speak the same version");
  expect(DFC_FreeDiagEnv() == 0, "DFC_FreeDiagEnv returns 0");
}

int main(void) {
  check_without_initialisation();
  check_adapters();
  return failures == 0 ? 0 : 1;
}
