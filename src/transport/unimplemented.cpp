// Entry points that have no function on this platform.
#include "vaskdfc/unimplemented.h"

#include "vaskdfc/result.h"

uint32_t AddBind(uint32_t, const void*) { return DFC_UNSUPPORTED; }
uint32_t DelBind(uint32_t, const void*) { return DFC_UNSUPPORTED; }
uint32_t DFC_SendHaldeCommand(uint32_t, const void*, uint32_t, void*, uint32_t*) { return DFC_UNSUPPORTED; }
uint32_t DFC_VPCreate(uint32_t, const void*, HbaWwn*) { return DFC_UNSUPPORTED; }
uint32_t DFC_VPDelete(uint32_t, const HbaWwn*) { return DFC_UNSUPPORTED; }
uint32_t DFC_VPDeleteV2(uint32_t, const HbaWwn*, uint32_t) { return DFC_UNSUPPORTED; }
uint32_t DFC_GetFcpTargetMappingByWWN(uint32_t, const HbaWwn*, void*) { return DFC_UNSUPPORTED; }
uint32_t DFC_GetAuthConfig(uint32_t, const void*, void*) { return DFC_UNSUPPORTED; }
uint32_t DFC_SetAuthConfig(uint32_t, const void*, const void*) { return DFC_UNSUPPORTED; }
uint32_t DFC_DeleteAuthConfig(uint32_t, const void*) { return DFC_UNSUPPORTED; }
uint32_t DFC_GetAuthPassword(uint32_t, const void*, void*) { return DFC_UNSUPPORTED; }
uint32_t DFC_SetAuthPassword(uint32_t, const void*, const void*) { return DFC_UNSUPPORTED; }
uint32_t DFC_InitiateAuthentication(uint32_t, const void*) { return DFC_UNSUPPORTED; }
uint32_t DFC_EnableAuthentication(uint32_t) { return DFC_UNSUPPORTED; }
uint32_t DFC_DisableAuthentication(uint32_t) { return DFC_UNSUPPORTED; }
uint32_t DFC_GetAuthStatus(uint32_t, const void*, void*) { return DFC_UNSUPPORTED; }
uint32_t DFC_GetAuthConfigList(uint32_t, void*, uint32_t*) { return DFC_UNSUPPORTED; }
