/**
 * @file
 * Extended Link Services (ELS), Common Transport (CT) requests to fabric services, and management commands and responses: the
 * payload of a frame goes out, the payload of the reply comes back.
 *
 * Replies are received as long as the driver says they are; the caller's buffer must have the room that each operation names.
 */
#ifndef VASKDFC_FABRIC_H
#define VASKDFC_FABRIC_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** Describes an ELS request to the driver; its layout is the driver's. */
typedef struct dfc_els_descriptor {
  uint8_t bytes[16]; /**< The driver's. */
} dfc_els_descriptor;
VASKDFC_RECORD_SIZE(dfc_els_descriptor, 16);

/** Describes a management command to the driver; its layout is the driver's. */
typedef struct dfc_mgmt_command {
  uint8_t bytes[8]; /**< The driver's. */
} dfc_mgmt_command;
VASKDFC_RECORD_SIZE(dfc_mgmt_command, 8);

/** Longest ELS request and reply, in bytes. */
#define DFC_ELS_BYTES 1024u
/** Longest CT or management request and reply, in bytes. */
#define DFC_SERVICE_BYTES 245760u

/** @name Results of DFC_SendELSCmd beside those of vaskdfc/result.h
 *  @{ */
#define DFC_ELS_BAD000A 3u /**< driver status 0xbad000a */
/** @} */

/** @name Results of GetCTInfo that are no lengths
 *  @{ */
#define DFC_CT_BAD0021 0      /**< driver status 0xbad0021 */
#define DFC_CT_BAD005A (-1)   /**< driver status 0xbad005a */
#define DFC_CT_NO_MEMORY (-2) /**< no memory, or driver status 0xbad0014 */
#define DFC_CT_TOO_LONG (-3)  /**< the request is too long, or driver status 0xbad005d */
#define DFC_CT_FAILED (-4)    /**< no well-known address, or any other failure */
/** @} */

/** @name Results of SendMgmtCommand and SendMgmtResponse
 *  The two name driver status 0xbad0021 differently.
 *  @{ */
#define DFC_MGMT_RESPONSE_BAD0021 250u /**< SendMgmtResponse: driver status 0xbad0021 */
#define DFC_MGMT_FAILED 252u           /**< any failure not named here */
#define DFC_MGMT_BAD005A 253u          /**< driver status 0xbad005a */
#define DFC_MGMT_COMMAND_BAD0021 254u  /**< SendMgmtCommand: driver status 0xbad0021 */
#define DFC_MGMT_TOO_LONG 255u         /**< driver status 0xbad005d */
/** @} */

/**
 * Sends an ELS request.
 *
 * @param board          board index
 * @param descriptor     passed to the driver
 * @param request        `request_bytes` bytes
 * @param request_bytes  at most DFC_ELS_BYTES
 * @param reply          receives the reply, at most DFC_ELS_BYTES
 * @param reply_bytes    receives the reply's length, also where the driver says that it is too large
 * @return DFC_OK; DFC_TOO_SMALL for driver status 0xbad005d; DFC_ELS_BAD000A; DFC_FAILED on any other failure, for a longer request
 * or without memory (nothing sent)
 *
 * Driver callback: TREL_MGMT_SEND_ELS.
 */
uint32_t DFC_SendELSCmd(uint32_t board, const dfc_els_descriptor* descriptor, const void* request, uint32_t request_bytes,
                        void* reply, uint32_t* reply_bytes);

/**
 * Sends a CT request to a fabric service.
 *
 * @param board          board index
 * @param destination    well-known address 0xFFFF00 to 0xFFFFFF
 * @param request        `request_bytes` bytes, beginning with the CT preamble
 * @param request_bytes  at most DFC_SERVICE_BYTES
 * @param reply          receives the reply, at most DFC_SERVICE_BYTES; the room below does not bound it, the driver honours it
 * @param reply_room     bytes, for the driver
 * @return length of the reply in bytes, or one of DFC_CT_BAD0021 to DFC_CT_FAILED
 *
 * Driver callback: TREL_MGMT_SEND_CT.
 */
int32_t GetCTInfo(uint32_t board, int32_t destination, const void* request, uint32_t request_bytes, void* reply,
                  uint32_t reply_room);

/**
 * Sends a CT request to the service that its GS_TYPE (byte 4) names: 0xFA to 0xFD to 0xFFFFFA to 0xFFFFFD, all others to the
 * directory service at 0xFFFFFC.
 *
 * @param board          board index
 * @param request        `request_bytes` bytes, at least 5
 * @param request_bytes  at most DFC_SERVICE_BYTES
 * @param reply          receives the reply
 * @param reply_bytes    in: room in bytes; out: length of the reply; untouched on failure
 * @return DFC_OK; DFC_FAILED on any failure and for a reply of no bytes
 *
 * Driver callback: TREL_MGMT_SEND_CT.
 */
uint32_t SendCTPassThru(uint32_t board, const void* request, uint32_t request_bytes, void* reply, uint32_t* reply_bytes);

/**
 * Sends a management command.
 *
 * @param board          board index
 * @param command        passed to the driver
 * @param request        `request_bytes` bytes
 * @param request_bytes  at most DFC_SERVICE_BYTES
 * @param reply          receives the reply, at most DFC_SERVICE_BYTES
 * @param reply_bytes    receives the reply's length, also with DFC_MGMT_TOO_LONG
 * @param argument       passed to the driver
 * @return DFC_OK; DFC_MGMT_TOO_LONG; DFC_MGMT_COMMAND_BAD0021; DFC_MGMT_BAD005A; DFC_MGMT_FAILED on any other failure, for a longer
 * request or without memory (nothing sent)
 *
 * Driver callback: TREL_MGMT_HBA_SEND_MGMT_CMD.
 */
uint32_t SendMgmtCommand(uint32_t board, const dfc_mgmt_command* command, const void* request, uint32_t request_bytes, void* reply,
                         uint32_t* reply_bytes, uint32_t argument);

/**
 * Sends the response to a management command.
 *
 * @param board           board index
 * @param response        `response_bytes` bytes
 * @param response_bytes  at most DFC_SERVICE_BYTES; the driver is told DFC_SERVICE_BYTES whatever it is
 * @param argument        passed to the driver
 * @return DFC_OK; DFC_MGMT_TOO_LONG; DFC_MGMT_RESPONSE_BAD0021; DFC_MGMT_BAD005A; DFC_MGMT_FAILED on any other failure, for a
 * longer response or without memory (nothing sent)
 *
 * Driver callback: TREL_MGMT_HBA_SEND_MGMT_RSP.
 */
uint32_t SendMgmtResponse(uint32_t board, const void* response, uint32_t response_bytes, uint32_t argument);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
