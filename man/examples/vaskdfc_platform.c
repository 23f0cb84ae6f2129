#include <stdio.h>
#include <vaskdfc.h>
#include <vaskdfc/platform.h>

/* A host without a driver: what an executable defines itself comes
   before the host's management library. */
int vmk_MgmtUserInit(const void* signature, uint64_t cookie,
                     vmk_MgmtUserHandle* handle) {
  (void)cookie, (void)handle;
  const dfc_mgmt_signature* interface = signature;
  printf("asked for %s\n", interface->name);
  return 1;
}

int vmk_MgmtUserDestroy(vmk_MgmtUserHandle handle) {
  (void)handle;
  return 0;
}

int vmk_MgmtUserCallbackInvokeInt(vmk_MgmtUserHandle handle,
                                  uint64_t instance, uint64_t callback,
                                  uint32_t count, ...) {
  (void)handle, (void)instance, (void)callback, (void)count;
  return 1;
}

int main(void) {
  dfc_brd_info boards[DFC_MAX_BOARDS];
  return DFC_InitDiagEnv(boards, DFC_MAX_BOARDS) == 0 ? 0 : 1;
}
