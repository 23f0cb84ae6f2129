/*
 * An executable that is its own platform: it defines the three platform functions, initialises the library and prints all that
 * the library hands over, byte for byte. The library's own platform library is loaded as well and must never be asked.
 *
 *   recording_platform        grants the first interface
 *   recording_platform N      refuses the first N
 */
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <vaskdfc.h>
#include <vaskdfc/platform.h>

static int refusals;
static char granted;

static void print_bytes(const char* what, const void* record, size_t size) {
  const unsigned char* byte = record;
  printf("%s ", what);
  while (size-- > 0) printf("%02x", *byte++);
  printf("\n");
}

int vmk_MgmtUserInit(const void* record, uint64_t cookie, vmk_MgmtUserHandle* handle) {
  const dfc_mgmt_signature* signature = record;
  printf("open cookie %llu\n", (unsigned long long)cookie);
  print_bytes("signature", signature, offsetof(dfc_mgmt_signature, callbacks));
  printf("table %p\n", (const void*)signature->callbacks);
  for (uint32_t i = 0; i < signature->callback_count; ++i) {
    print_bytes("descriptor", &signature->callbacks[i], sizeof(signature->callbacks[i]));
  }
  if (refusals-- > 0) return 1;
  *handle = &granted;
  return 0;
}

int vmk_MgmtUserDestroy(vmk_MgmtUserHandle handle) {
  printf("destroy %s\n", handle == &granted ? "granted" : "foreign");
  return 0;
}

/* The driver of a host without adapters: no board number is known. */
int vmk_MgmtUserCallbackInvokeInt(vmk_MgmtUserHandle handle, uint64_t instance, uint64_t callback, uint32_t count, ...) {
  va_list parameters;
  va_start(parameters, count);
  dfc_mgmt_hdr* header = va_arg(parameters, dfc_mgmt_hdr*);
  va_end(parameters);
  printf("invoke %s instance %llu callback %llu parameters %u board %u\n", handle == &granted ? "granted" : "foreign",
         (unsigned long long)instance, (unsigned long long)callback, (unsigned)count, (unsigned)header->brdno);
  header->status = 1;
  return 0;
}

int main(int argc, char** argv) {
  if (argc > 1) refusals = atoi(argv[1]);

  static dfc_brd_info boards[DFC_MAX_BOARDS];
  printf("boards %u\n", (unsigned)DFC_InitDiagEnv(boards, DFC_MAX_BOARDS));
  printf("free %u\n", (unsigned)DFC_FreeDiagEnv());
  return 0;
}
