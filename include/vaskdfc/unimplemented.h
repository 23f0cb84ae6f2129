/**
 * @file
 * Entry points that belong to the interface but have no function on this platform. They exist so that applications written
 * against the full interface load and run. Each returns DFC_UNSUPPORTED (2) at once, before initialisation as well; none
 * looks at its arguments, calls the driver or writes to the log. What each would do is said only so that it can be recognised.
 */
#ifndef VASKDFC_UNIMPLEMENTED_H
#define VASKDFC_UNIMPLEMENTED_H

#include "vaskdfc/hbaapi.h"
#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/**
 * Adds a persistent binding.
 *
 * @param board    board index
 * @param binding  the binding
 * @return DFC_UNSUPPORTED
 */
uint32_t AddBind(uint32_t board, const void* binding);

/**
 * Deletes a persistent binding.
 *
 * @param board    board index
 * @param binding  the binding
 * @return DFC_UNSUPPORTED
 */
uint32_t DelBind(uint32_t board, const void* binding);

/**
 * Passes a product's own command through.
 *
 * @param board          board index
 * @param request        the command
 * @param request_bytes  bytes of the command
 * @param reply          room for the reply
 * @param reply_bytes    room in bytes
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_SendHaldeCommand(uint32_t board, const void* request, uint32_t request_bytes, void* reply, uint32_t* reply_bytes);

/**
 * Creates a virtual port.
 *
 * @param board       board index
 * @param attributes  attributes of the virtual port
 * @param port_wwn    port WWN
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_VPCreate(uint32_t board, const void* attributes, HbaWwn* port_wwn);

/**
 * Deletes a virtual port.
 *
 * @param board     board index
 * @param port_wwn  port WWN
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_VPDelete(uint32_t board, const HbaWwn* port_wwn);

/**
 * Deletes a virtual port, with options.
 *
 * @param board     board index
 * @param port_wwn  port WWN
 * @param options   options
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_VPDeleteV2(uint32_t board, const HbaWwn* port_wwn, uint32_t options);

/**
 * Reads the target mapping of a port that its WWN names.
 *
 * @param board     board index
 * @param port_wwn  port WWN
 * @param mapping   room for the mapping
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_GetFcpTargetMappingByWWN(uint32_t board, const HbaWwn* port_wwn, void* mapping);

/**
 * Reads the settings of authentication (FC-SP).
 *
 * @param board   board index
 * @param key     whose settings
 * @param config  the settings
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_GetAuthConfig(uint32_t board, const void* key, void* config);

/**
 * Changes the settings of authentication.
 *
 * @param board   board index
 * @param key     whose settings
 * @param config  the settings
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_SetAuthConfig(uint32_t board, const void* key, const void* config);

/**
 * Deletes settings of authentication.
 *
 * @param board  board index
 * @param key    whose settings
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_DeleteAuthConfig(uint32_t board, const void* key);

/**
 * Reads a password of authentication.
 *
 * @param board     board index
 * @param key       whose settings
 * @param password  the password
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_GetAuthPassword(uint32_t board, const void* key, void* password);

/**
 * Changes a password of authentication.
 *
 * @param board     board index
 * @param key       whose settings
 * @param password  the password
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_SetAuthPassword(uint32_t board, const void* key, const void* password);

/**
 * Starts an authentication.
 *
 * @param board  board index
 * @param key    whose settings
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_InitiateAuthentication(uint32_t board, const void* key);

/**
 * Switches authentication on.
 *
 * @param board  board index
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_EnableAuthentication(uint32_t board);

/**
 * Switches authentication off.
 *
 * @param board  board index
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_DisableAuthentication(uint32_t board);

/**
 * Tells how an authentication went.
 *
 * @param board   board index
 * @param key     whose settings
 * @param status  room for the status
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_GetAuthStatus(uint32_t board, const void* key, void* status);

/**
 * Lists the settings of authentication.
 *
 * @param board  board index
 * @param list   room for the list
 * @param count  room in entries
 * @return DFC_UNSUPPORTED
 */
uint32_t DFC_GetAuthConfigList(uint32_t board, void* list, uint32_t* count);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
