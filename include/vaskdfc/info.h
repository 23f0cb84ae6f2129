/**
 * @file
 * Revisions, driver information, kernel messages and test events.
 */
#ifndef VASKDFC_INFO_H
#define VASKDFC_INFO_H

#include "vaskdfc/hbaapi.h"
#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** Smallest buffer that DFC_GetLibVer takes, in bytes. */
#define DFC_LIB_VERSION_BYTES 31u

/** One side of the management interface: the library's or the driver's. */
typedef struct dfc_interface_rev {
  uint32_t version;        /**< Four components of one byte, most significant first; the library's is 0x2000101. */
  char name[32];           /**< Interface name; NUL-terminated on the library's side. */
  char vendor[32];         /**< Vendor; NUL-terminated on the library's side. */
  uint32_t callback_count; /**< Number of callbacks; the library's is 77. */
} dfc_interface_rev;
VASKDFC_RECORD_SIZE(dfc_interface_rev, 72);
VASKDFC_FIELD_AT(dfc_interface_rev, vendor, 36);
VASKDFC_FIELD_AT(dfc_interface_rev, callback_count, 68);

/** The driver behind one adapter. Fields named reply_N hold what the driver's information reply carries at offset N. */
typedef struct dfc_drv_info {
  uint8_t caller_0;        /**< Left as the caller set it. */
  uint8_t constant_21;     /**< Always 21. */
  uint8_t caller_2[2];     /**< Not written. */
  uint8_t constant_4;      /**< Always 4. */
  uint8_t constant_0;      /**< Always 0. */
  uint8_t constant_1;      /**< Always 1. */
  uint8_t caller_7;        /**< Not written. */
  char driver_version[16]; /**< First bytes of the adapter's DriverVersion; not NUL-terminated when it is longer. */
  char driver_name[8];     /**< First bytes of the adapter's DriverName; not NUL-terminated when it is longer. */
  uint8_t reply_0[16];     /**< The driver's. */
  uint8_t reply_64[8];     /**< The driver's. */
  uint8_t zero_56[24];     /**< Always 0. */
  uint32_t port_fc_id;     /**< PortFcId of port 0. */
  HbaWwn port_wwn;         /**< PortWWN of port 0. */
  HbaWwn node_wwn;         /**< NodeWWN of port 0. */
  char host_name[32];      /**< The host's name; not NUL-terminated when it is longer. */
  uint32_t zero_132;       /**< Always 0. */
  uint32_t sli_mode;       /**< SLI interface mode of the adapter: 3 for the older interface, 4 and above for the newer. */
  uint32_t feature_flags;  /**< The driver's flags, and DFC_FEATURE_EXTENDED_SLI_CONFIG. */
  uint32_t reply_108;      /**< The driver's. */
} dfc_drv_info;
VASKDFC_RECORD_SIZE(dfc_drv_info, 148);
VASKDFC_FIELD_AT(dfc_drv_info, driver_version, 8);
VASKDFC_FIELD_AT(dfc_drv_info, port_fc_id, 80);
VASKDFC_FIELD_AT(dfc_drv_info, host_name, 100);
VASKDFC_FIELD_AT(dfc_drv_info, sli_mode, 136);

/** The driver takes extended SLI configuration mailboxes; only set in SLI mode 4 and above. */
#define DFC_FEATURE_EXTENDED_SLI_CONFIG 0x1000u

/** The driver's module information; its layout is the driver's. */
typedef struct dfc_module_info {
  uint8_t bytes[6276]; /**< The driver's. */
} dfc_module_info;
VASKDFC_RECORD_SIZE(dfc_module_info, 6276);

/** A message for the driver's log, sent as it is. */
typedef struct dfc_kernel_message {
  char text[64]; /**< All of it is sent. */
} dfc_kernel_message;
VASKDFC_RECORD_SIZE(dfc_kernel_message, 64);

/**
 * Tells the revision of the library's interface to applications. No driver call.
 *
 * @param major  receives 4
 * @param minor  receives 0
 * @return 0
 */
uint32_t GetDfcRev(uint32_t* major, uint32_t* minor);

/**
 * Tells the library's version. No driver call; may be called before initialisation.
 *
 * @param text  receives the NUL-terminated text; at least DFC_LIB_VERSION_BYTES bytes
 * @return length of the text
 */
uint32_t DFC_GetLibVer(char* text);

/**
 * Tells both sides of the management interface.
 *
 * @param driver   receives the driver's side, as the driver fills it
 * @param library  receives the library's side, also when the call fails; it always names the primary interface
 * @return 0, or the platform's status, or the driver's
 *
 * Driver callback: TREL_MGMT_CALL_VER.
 */
uint32_t CallVer(dfc_interface_rev* driver, dfc_interface_rev* library);

/**
 * Describes the driver behind an adapter.
 *
 * @param board  board index
 * @param info   receives the description; untouched on failure
 * @return DFC_OK; DFC_UNSUPPORTED when the driver's information or the attributes of port 0 cannot be read
 *
 * Driver callbacks: TREL_MGMT_GET_TRELDFC_INFO, TREL_MGMT_HBA_ADAPTERATTRIBUTES, TREL_MGMT_HBA_PORTATTRIBUTES,
 * TREL_MGMT_MBOX_SLI_CFG_EXT_SUP. A failure of the second or the fourth is not a failure of this operation.
 */
uint32_t DFC_GetDrvInfo(uint32_t board, dfc_drv_info* info);

/**
 * Fetches the driver's module information.
 *
 * @param info  filled by the driver
 * @return 0, or the platform's status, or the driver's
 *
 * Driver callback: TREL_MGMT_MOD_INFO.
 */
uint32_t ModInfo(dfc_module_info* info);

/**
 * Writes a message into the driver's log.
 *
 * @param message  64 bytes
 * @return 0, or the platform's status, or the driver's
 *
 * Driver callback: TREL_MGMT_LOG_MSG.
 */
uint32_t LogMsg(const dfc_kernel_message* message);

/**
 * Asks the driver to raise a test event.
 *
 * @param board   board index
 * @param first   first test value
 * @param second  second test value
 * @return 0, or the platform's status, or the driver's
 *
 * Driver callback: TREL_MGMT_EVENT_TEST.
 */
uint32_t EventTest(uint32_t board, uint32_t first, uint32_t second);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
