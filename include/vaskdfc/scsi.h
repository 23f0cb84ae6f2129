/**
 * @file
 * SCSI and FCP commands to a logical unit behind a remote port.
 *
 * Every operation sends one command and returns what it produced. Conventions that hold for all of them:
 *
 *   - `target` is the WWN of the remote port; a local port WWN and a command length are accepted and not used.
 *   - Data lengths are in bytes: the caller's buffer before the call, what the command produced afterwards. The buffer is sent to
 * the driver and receives the data, whatever the direction; at most 262144 bytes travel.
 *   - HBA_STATUS_ERROR_MORE_DATA: the command produced more than the buffer holds. The data length says how much; nothing else is
 *     copied.
 *   - HBA_STATUS_ERROR: any failure of the call, or no memory; lengths and buffers are untouched.
 *   - HBA_STATUS_OK: the command was completed. A check condition is a completed command: look at the sense length.
 *   - Sense: at most 128 bytes are received; the sense length before the call is not looked at.
 *   - A LUN of 64 bits is in FCP LUN byte order in memory.
 *
 * Driver callbacks: TREL_MGMT_HBA_SEND_SCSI, and TREL_MGMT_HBA_SEND_FCP for the operations with "Fcp" in their name.
 */
#ifndef VASKDFC_SCSI_H
#define VASKDFC_SCSI_H

#include "vaskdfc/hbaapi.h"
#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** An FCP command as it travels: FCP_CMND, big-endian. */
typedef struct FcpCmndBlock {
  uint8_t FcpLun[8];              /**< The logical unit, in FCP LUN byte order. */
  uint8_t CommandReferenceNumber; /**< 0 where the order of commands does not matter. */
  uint8_t TaskAttribute;          /**< 0 for a simple task. */
  uint8_t TaskManagementFlags;    /**< 0 for a command. */
  uint8_t DataDirection;          /**< FCP_READ_DATA or FCP_WRITE_DATA. */
  uint8_t CDB[16];                /**< The command descriptor block; bytes beyond its length are 0. */
  uint8_t DataLength[4];          /**< FCP_DL, big-endian. */
} FcpCmndBlock;
VASKDFC_RECORD_SIZE(FcpCmndBlock, 32);
VASKDFC_FIELD_AT(FcpCmndBlock, CDB, 12);
VASKDFC_FIELD_AT(FcpCmndBlock, DataLength, 28);

/** @name Data directions
 *  @{ */
#define FCP_WRITE_DATA 1u /**< to the target */
#define FCP_READ_DATA 2u  /**< from the target */
/** @} */

/** Most bytes of data that one command moves. */
#define DFC_SCSI_DATA_BYTES 262144u

/** Most bytes of sense that come back. */
#define DFC_SCSI_SENSE_BYTES 128u

/**
 * Sends a SCSI command; sense bytes come back.
 *
 * @param board          board index
 * @param local          not used
 * @param target         port WWN of the remote port
 * @param command        the command as it travels
 * @param command_bytes  not used
 * @param data           sent to the driver, and receives the data
 * @param data_bytes     in: bytes of `data`; out: bytes that the command produced, also where they do not fit
 * @param sense          receives the sense, at most DFC_SCSI_SENSE_BYTES bytes
 * @param sense_bytes    receives the number of sense bytes; not looked at before
 * @return HBA_STATUS_OK for a completed command, a check condition included; HBA_STATUS_ERROR_MORE_DATA when the data do not fit;
 *         HBA_STATUS_ERROR on any failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_SCSI.
 */
uint32_t SendScsiCmdByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, const FcpCmndBlock* command,
                          uint32_t command_bytes, void* data, uint32_t* data_bytes, void* sense, uint32_t* sense_bytes);

/**
 * Sends a SCSI command; sense bytes come back.
 *
 * @param board          board index
 * @param target         port WWN of the remote port
 * @param command        the command as it travels
 * @param command_bytes  not used
 * @param data           sent to the driver, and receives the data
 * @param data_bytes     in: bytes of `data`; out: bytes that the command produced, also where they do not fit
 * @param sense          receives the sense, at most DFC_SCSI_SENSE_BYTES bytes
 * @param sense_bytes    receives the number of sense bytes; not looked at before
 * @return HBA_STATUS_OK for a completed command, a check condition included; HBA_STATUS_ERROR_MORE_DATA when the data do not fit;
 *         HBA_STATUS_ERROR on any failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_SCSI.
 */
uint32_t SendScsiCmd(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                     uint32_t* data_bytes, void* sense, uint32_t* sense_bytes);

/**
 * Sends an FCP command; FCP response bytes come back.
 *
 * @param board           board index
 * @param local           not used
 * @param target          port WWN of the remote port
 * @param command         the command as it travels
 * @param command_bytes   not used
 * @param data            sent to the driver, and receives the data
 * @param data_bytes      in: bytes of `data`; out: bytes that the command produced, also where they do not fit
 * @param response        receives the FCP response, at most 160 bytes
 * @param response_bytes  in: sent to the driver; out: length of the response, also where the data do not fit
 * @param extra           passed to the driver
 * @return HBA_STATUS_OK for a completed command; HBA_STATUS_ERROR_MORE_DATA when the data do not fit, or for driver status
 * 0x0BAD005D; HBA_STATUS_ERROR on any other failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_FCP.
 */
uint32_t SendFcpCmdByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, const FcpCmndBlock* command,
                         uint32_t command_bytes, void* data, uint32_t* data_bytes, void* response, uint32_t* response_bytes,
                         uint32_t extra);

/**
 * Sends an FCP command with an extra argument of 0.
 *
 * @param board           board index
 * @param target          port WWN of the remote port
 * @param command         the command as it travels
 * @param command_bytes   not used
 * @param data            sent to the driver, and receives the data
 * @param data_bytes      in: bytes of `data`; out: bytes that the command produced, also where they do not fit
 * @param response        receives the FCP response, at most 160 bytes
 * @param response_bytes  in: sent to the driver; out: length of the response, also where the data do not fit
 * @return HBA_STATUS_OK for a completed command; HBA_STATUS_ERROR_MORE_DATA when the data do not fit, or for driver status
 * 0x0BAD005D; HBA_STATUS_ERROR on any other failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_FCP.
 */
uint32_t DFC_SendFcpCmd(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                        uint32_t* data_bytes, void* response, uint32_t* response_bytes);

/**
 * Does what DFC_SendFcpCmd does.
 *
 * @param board           board index
 * @param target          port WWN of the remote port
 * @param command         the command as it travels
 * @param command_bytes   not used
 * @param data            sent to the driver, and receives the data
 * @param data_bytes      in: bytes of `data`; out: bytes that the command produced, also where they do not fit
 * @param response        receives the FCP response, at most 160 bytes
 * @param response_bytes  in: sent to the driver; out: length of the response, also where the data do not fit
 * @return HBA_STATUS_OK for a completed command; HBA_STATUS_ERROR_MORE_DATA when the data do not fit, or for driver status
 * 0x0BAD005D; HBA_STATUS_ERROR on any other failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_FCP.
 */
uint32_t SendFcpCmd(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                    uint32_t* data_bytes, void* response, uint32_t* response_bytes);

/**
 * Sends an FCP command with an extra argument.
 *
 * @param board           board index
 * @param target          port WWN of the remote port
 * @param command         the command as it travels
 * @param command_bytes   not used
 * @param data            sent to the driver, and receives the data
 * @param data_bytes      in: bytes of `data`; out: bytes that the command produced, also where they do not fit
 * @param response        receives the FCP response, at most 160 bytes
 * @param response_bytes  in: sent to the driver; out: length of the response, also where the data do not fit
 * @param extra           passed to the driver
 * @return HBA_STATUS_OK for a completed command; HBA_STATUS_ERROR_MORE_DATA when the data do not fit, or for driver status
 * 0x0BAD005D; HBA_STATUS_ERROR on any other failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_FCP.
 */
uint32_t SendFcpCmdEx(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                      uint32_t* data_bytes, void* response, uint32_t* response_bytes, uint32_t extra);

/**
 * INQUIRY. The allocation length in the command is the low 8 bits of the response size.
 *
 * @param board           board index
 * @param target          port WWN of the remote port
 * @param lun             in FCP LUN byte order in memory
 * @param evpd            0 for standard data, anything else for a vital product data page
 * @param page            page code; not sent where `evpd` is 0
 * @param response        sent to the driver, and receives the data
 * @param response_bytes  in: bytes of `response`; out: bytes that the command produced, also where they do not fit
 * @param sense           receives the sense, at most DFC_SCSI_SENSE_BYTES bytes
 * @param sense_bytes     receives the number of sense bytes; not looked at before
 * @return HBA_STATUS_OK for a completed command, a check condition included; HBA_STATUS_ERROR_MORE_DATA when the data do not fit;
 *         HBA_STATUS_ERROR on any failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_SCSI.
 */
uint32_t SendScsiInquiry(uint32_t board, const HbaWwn* target, uint64_t lun, uint8_t evpd, uint8_t page, void* response,
                         uint32_t* response_bytes, void* sense, uint32_t* sense_bytes);

/**
 * INQUIRY, as SendScsiInquiry does it.
 *
 * @param board           board index
 * @param local           not used
 * @param target          port WWN of the remote port
 * @param lun             in FCP LUN byte order in memory
 * @param evpd            0 for standard data, anything else for a vital product data page
 * @param page            page code; not sent where `evpd` is 0
 * @param response        sent to the driver, and receives the data
 * @param response_bytes  in: bytes of `response`; out: bytes that the command produced, also where they do not fit
 * @param sense           receives the sense, at most DFC_SCSI_SENSE_BYTES bytes
 * @param sense_bytes     receives the number of sense bytes; not looked at before
 * @return HBA_STATUS_OK for a completed command, a check condition included; HBA_STATUS_ERROR_MORE_DATA when the data do not fit;
 *         HBA_STATUS_ERROR on any failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_SCSI.
 */
uint32_t DFC_SendScsiInquiryByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, uint64_t lun, uint8_t evpd,
                                  uint8_t page, void* response, uint32_t* response_bytes, void* sense, uint32_t* sense_bytes);

/**
 * READ CAPACITY(10).
 *
 * @param board           board index
 * @param target          port WWN of the remote port
 * @param lun             in FCP LUN byte order in memory
 * @param response        sent to the driver, and receives the data
 * @param response_bytes  in: bytes of `response`; out: bytes that the command produced, also where they do not fit
 * @param sense           receives the sense, at most DFC_SCSI_SENSE_BYTES bytes
 * @param sense_bytes     receives the number of sense bytes; not looked at before
 * @return HBA_STATUS_OK for a completed command, a check condition included; HBA_STATUS_ERROR_MORE_DATA when the data do not fit;
 *         HBA_STATUS_ERROR on any failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_SCSI.
 */
uint32_t SendReadCapacity(uint32_t board, const HbaWwn* target, uint64_t lun, void* response, uint32_t* response_bytes, void* sense,
                          uint32_t* sense_bytes);

/**
 * READ CAPACITY(10) with a LUN of 32 bits. Callers that need a clean LUN use SendReadCapacity.
 *
 * @param board           board index
 * @param local           not used
 * @param target          port WWN of the remote port
 * @param lun             bytes 0 to 3 of the FCP LUN; bytes 4 to 7 are the low 32 bits of the response's address
 * @param response        sent to the driver, and receives the data
 * @param response_bytes  in: bytes of `response`; out: bytes that the command produced, also where they do not fit
 * @param sense           receives the sense, at most DFC_SCSI_SENSE_BYTES bytes
 * @param sense_bytes     receives the number of sense bytes; not looked at before
 * @return HBA_STATUS_OK for a completed command, a check condition included; HBA_STATUS_ERROR_MORE_DATA when the data do not fit;
 *         HBA_STATUS_ERROR on any failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_SCSI.
 */
uint32_t DFC_SendReadCapacityByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, uint32_t lun, void* response,
                                   uint32_t* response_bytes, void* sense, uint32_t* sense_bytes);

/**
 * REPORT LUNS, addressed to LUN 0.
 *
 * @param board           board index
 * @param target          port WWN of the remote port
 * @param response        sent to the driver, and receives the data
 * @param response_bytes  in: bytes of `response`; out: bytes that the command produced, also where they do not fit
 * @param sense           receives the sense, at most DFC_SCSI_SENSE_BYTES bytes
 * @param sense_bytes     receives the number of sense bytes; not looked at before
 * @return HBA_STATUS_OK for a completed command, a check condition included; HBA_STATUS_ERROR_MORE_DATA when the data do not fit;
 *         HBA_STATUS_ERROR on any failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_SCSI.
 */
uint32_t SendReportLUNs(uint32_t board, const HbaWwn* target, void* response, uint32_t* response_bytes, void* sense,
                        uint32_t* sense_bytes);

/**
 * REPORT LUNS, addressed to LUN 0.
 *
 * @param board           board index
 * @param local           not used
 * @param target          port WWN of the remote port
 * @param response        sent to the driver, and receives the data
 * @param response_bytes  in: bytes of `response`; out: bytes that the command produced, also where they do not fit
 * @param sense           receives the sense, at most DFC_SCSI_SENSE_BYTES bytes
 * @param sense_bytes     receives the number of sense bytes; not looked at before
 * @return HBA_STATUS_OK for a completed command, a check condition included; HBA_STATUS_ERROR_MORE_DATA when the data do not fit;
 *         HBA_STATUS_ERROR on any failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_SCSI.
 */
uint32_t DFC_SendReportLUNsByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, void* response,
                                 uint32_t* response_bytes, void* sense, uint32_t* sense_bytes);

/**
 * READ(10) of `data_bytes` / 512 blocks. A remainder is cut from the command but not from its data length.
 *
 * @param board          board index
 * @param target         port WWN of the remote port
 * @param lun            in FCP LUN byte order in memory
 * @param block_address  first block
 * @param data           sent to the driver, and receives the data
 * @param data_bytes     in: bytes of `data`; out: bytes that the command produced, also where they do not fit
 * @param sense          receives the sense, at most DFC_SCSI_SENSE_BYTES bytes
 * @param sense_bytes    receives the number of sense bytes; not looked at before
 * @return HBA_STATUS_OK for a completed command, a check condition included; HBA_STATUS_ERROR_MORE_DATA when the data do not fit;
 *         HBA_STATUS_ERROR on any failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_SCSI.
 */
uint32_t SendScsiRead(uint32_t board, const HbaWwn* target, uint64_t lun, uint32_t block_address, void* data, uint32_t* data_bytes,
                      void* sense, uint32_t* sense_bytes);

/**
 * WRITE(10) of `data_bytes` / 512 blocks. A remainder is cut from the command but not from its data length.
 *
 * @param board          board index
 * @param target         port WWN of the remote port
 * @param lun            in FCP LUN byte order in memory
 * @param block_address  first block
 * @param data           sent to the driver, and receives the data
 * @param data_bytes     in: bytes of `data`; out: bytes that the command produced, also where they do not fit
 * @param sense          receives the sense, at most DFC_SCSI_SENSE_BYTES bytes
 * @param sense_bytes    receives the number of sense bytes; not looked at before
 * @return HBA_STATUS_OK for a completed command, a check condition included; HBA_STATUS_ERROR_MORE_DATA when the data do not fit;
 *         HBA_STATUS_ERROR on any failure or without memory
 *
 * Driver callback: TREL_MGMT_HBA_SEND_SCSI.
 */
uint32_t SendScsiWrite(uint32_t board, const HbaWwn* target, uint64_t lun, uint32_t block_address, void* data, uint32_t* data_bytes,
                       void* sense, uint32_t* sense_bytes);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
