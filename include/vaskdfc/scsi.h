/*
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
  uint8_t FcpLun[8];
  uint8_t CommandReferenceNumber;
  uint8_t TaskAttribute;
  uint8_t TaskManagementFlags;
  uint8_t DataDirection; /**< FCP_READ_DATA or FCP_WRITE_DATA. */
  uint8_t CDB[16];
  uint8_t DataLength[4]; /**< FCP_DL, big-endian. */
} FcpCmndBlock;
VASKDFC_RECORD_SIZE(FcpCmndBlock, 32);
VASKDFC_FIELD_AT(FcpCmndBlock, CDB, 12);
VASKDFC_FIELD_AT(FcpCmndBlock, DataLength, 28);

/* Data directions. */
#define FCP_WRITE_DATA 1u /* to the target */
#define FCP_READ_DATA 2u  /* from the target */

/** Most bytes of data that one command moves. */
#define DFC_SCSI_DATA_BYTES 262144u

/** Most bytes of sense that come back. */
#define DFC_SCSI_SENSE_BYTES 128u

/** Sends a SCSI command; sense bytes come back. */
uint32_t SendScsiCmdByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, const FcpCmndBlock* command,
                          uint32_t command_bytes, void* data, uint32_t* data_bytes, void* sense, uint32_t* sense_bytes);
uint32_t SendScsiCmd(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                     uint32_t* data_bytes, void* sense, uint32_t* sense_bytes);

/**
 * Sends an FCP command; FCP response bytes come back.
 *
 * Unlike the SCSI transport it returns HBA_STATUS_ERROR_MORE_DATA for driver status 0x0BAD005D too, passes `extra` to the driver,
 * and tells the response length also where the data do not fit. `response_bytes` before the call is sent to the driver; at most 160
 * bytes are received.
 */
uint32_t SendFcpCmdByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, const FcpCmndBlock* command,
                         uint32_t command_bytes, void* data, uint32_t* data_bytes, void* response, uint32_t* response_bytes,
                         uint32_t extra);
/** The same with an extra argument of 0. */
uint32_t DFC_SendFcpCmd(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                        uint32_t* data_bytes, void* response, uint32_t* response_bytes);
uint32_t SendFcpCmd(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                    uint32_t* data_bytes, void* response, uint32_t* response_bytes);
uint32_t SendFcpCmdEx(uint32_t board, const HbaWwn* target, const FcpCmndBlock* command, uint32_t command_bytes, void* data,
                      uint32_t* data_bytes, void* response, uint32_t* response_bytes, uint32_t extra);

/**
 * INQUIRY: standard data, or the vital product data page `page` where `evpd` is not 0. The command's allocation length is the low 8
 * bits of the response size.
 */
uint32_t SendScsiInquiry(uint32_t board, const HbaWwn* target, uint64_t lun, uint8_t evpd, uint8_t page, void* response,
                         uint32_t* response_bytes, void* sense, uint32_t* sense_bytes);
uint32_t DFC_SendScsiInquiryByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, uint64_t lun, uint8_t evpd,
                                  uint8_t page, void* response, uint32_t* response_bytes, void* sense, uint32_t* sense_bytes);

/** READ CAPACITY(10). */
uint32_t SendReadCapacity(uint32_t board, const HbaWwn* target, uint64_t lun, void* response, uint32_t* response_bytes, void* sense,
                          uint32_t* sense_bytes);
/**
 * READ CAPACITY(10) with a LUN of 32 bits, which are bytes 0 to 3 of the FCP LUN. Bytes 4 to 7 are the low 32 bits of the response
 * buffer's address: callers that need a clean LUN use SendReadCapacity.
 */
uint32_t DFC_SendReadCapacityByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, uint32_t lun, void* response,
                                   uint32_t* response_bytes, void* sense, uint32_t* sense_bytes);

/** REPORT LUNS, addressed to LUN 0. */
uint32_t SendReportLUNs(uint32_t board, const HbaWwn* target, void* response, uint32_t* response_bytes, void* sense,
                        uint32_t* sense_bytes);
uint32_t DFC_SendReportLUNsByWWN(uint32_t board, const HbaWwn* local, const HbaWwn* target, void* response,
                                 uint32_t* response_bytes, void* sense, uint32_t* sense_bytes);

/**
 * READ(10) and WRITE(10) with blocks of 512 bytes: `data_bytes` / 512 blocks, of which the command carries the low 16 bits. A
 * remainder is cut from the command but not from its data length.
 */
uint32_t SendScsiRead(uint32_t board, const HbaWwn* target, uint64_t lun, uint32_t block_address, void* data, uint32_t* data_bytes,
                      void* sense, uint32_t* sense_bytes);
uint32_t SendScsiWrite(uint32_t board, const HbaWwn* target, uint64_t lun, uint32_t block_address, void* data, uint32_t* data_bytes,
                       void* sense, uint32_t* sense_bytes);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
