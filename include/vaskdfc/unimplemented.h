/*
 * Entry points that belong to the interface but have no function on this platform. They exist so that applications written
 * against the full interface load and run. Each returns DFC_UNSUPPORTED (2) at once, before initialisation as well; none
 * looks at its arguments, calls the driver or writes to the log.
 */
#ifndef VASKDFC_UNIMPLEMENTED_H
#define VASKDFC_UNIMPLEMENTED_H

#include "vaskdfc/hbaapi.h"
#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/* Persistent bindings. */
uint32_t AddBind(uint32_t board, const void* binding);
uint32_t DelBind(uint32_t board, const void* binding);

/* Product-specific command pass-through. */
uint32_t DFC_SendHaldeCommand(uint32_t board, const void* request, uint32_t request_bytes, void* reply, uint32_t* reply_bytes);

/* Virtual ports: creation and deletion. */
uint32_t DFC_VPCreate(uint32_t board, const void* attributes, HbaWwn* port_wwn);
uint32_t DFC_VPDelete(uint32_t board, const HbaWwn* port_wwn);
uint32_t DFC_VPDeleteV2(uint32_t board, const HbaWwn* port_wwn, uint32_t options);

/* Target mapping of a port by its WWN. */
uint32_t DFC_GetFcpTargetMappingByWWN(uint32_t board, const HbaWwn* port_wwn, void* mapping);

/* Fibre Channel authentication (FC-SP). */
uint32_t DFC_GetAuthConfig(uint32_t board, const void* key, void* config);
uint32_t DFC_SetAuthConfig(uint32_t board, const void* key, const void* config);
uint32_t DFC_DeleteAuthConfig(uint32_t board, const void* key);
uint32_t DFC_GetAuthPassword(uint32_t board, const void* key, void* password);
uint32_t DFC_SetAuthPassword(uint32_t board, const void* key, const void* password);
uint32_t DFC_InitiateAuthentication(uint32_t board, const void* key);
uint32_t DFC_EnableAuthentication(uint32_t board);
uint32_t DFC_DisableAuthentication(uint32_t board);
uint32_t DFC_GetAuthStatus(uint32_t board, const void* key, void* status);
uint32_t DFC_GetAuthConfigList(uint32_t board, void* list, uint32_t* count);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
