/**
 * @file
 * The platform's user-side management library, as this library uses it.
 *
 * Applications do not need this header. It is for whoever stands on the other side: a replacement for the platform library,
 * or an executable that defines the three functions itself. Such definitions take precedence over the library's own at run
 * time, so that an executable can observe, script or replace the driver.
 */
#ifndef VASKDFC_PLATFORM_H
#define VASKDFC_PLATFORM_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** Parameter 0 of every callback, in and out: twelve little-endian words. */
typedef struct dfc_mgmt_hdr {
  uint32_t brdno;  /**< Driver board number; 0 in calls that address no board. */
  uint32_t arg1;   /**< The argument words mean what the callback says; words that it does not use are 0. */
  uint32_t arg2;   /**< By convention the byte length of the buffer that is offered to the driver. */
  uint32_t arg3;   /**< By convention the number of bytes that the driver returned. */
  uint32_t arg4;   /**< As arg1. */
  uint32_t arg5;   /**< As arg1. */
  uint32_t arg6;   /**< As arg1. */
  uint32_t arg7;   /**< As arg1. */
  uint32_t rsvd1;  /**< Always sent as 0, as are the two words below. */
  uint32_t rsvd2;  /**< As rsvd1. */
  uint32_t rsvd3;  /**< As rsvd1. */
  uint32_t status; /**< Driver status, written by the driver; 0 is success. */
} dfc_mgmt_hdr;
VASKDFC_RECORD_SIZE(dfc_mgmt_hdr, 48);
VASKDFC_FIELD_AT(dfc_mgmt_hdr, arg7, 28);
VASKDFC_FIELD_AT(dfc_mgmt_hdr, status, 44);

/** Describes one callback to the platform. */
typedef struct dfc_mgmt_callback {
  uint32_t location;           /**< 1: the callback runs in the kernel. */
  const void* handler;         /**< User-space handler, always null. */
  uint8_t synchronous;         /**< 1: the call blocks until the driver has answered. */
  uint8_t parameter_count;     /**< 1 to 4, the header included. */
  uint8_t zero[2];             /**< 0 */
  uint32_t parameter_size[4];  /**< Bytes; 0 for an absent parameter. */
  uint32_t parameter_usage[4]; /**< 0 in (to the driver), 1 out (from the driver), 2 in and out. */
  uint64_t id;                 /**< The number that vmk_MgmtUserCallbackInvokeInt takes. */
} dfc_mgmt_callback;
VASKDFC_POINTER_RECORD_SIZE(dfc_mgmt_callback, 52, 64);

/** Describes the whole interface to the platform. */
typedef struct dfc_mgmt_signature {
  uint32_t version;                   /**< Four components of one byte, most significant first. */
  char name[32];                      /**< Interface name, NUL-terminated, rest zero. */
  char vendor[32];                    /**< Vendor, NUL-terminated, rest zero. */
  uint32_t callback_count;            /**< Entries of the table. */
  const dfc_mgmt_callback* callbacks; /**< The table. */
} dfc_mgmt_signature;
VASKDFC_POINTER_RECORD_SIZE(dfc_mgmt_signature, 76, 80);
VASKDFC_FIELD_AT(dfc_mgmt_signature, vendor, 36);
VASKDFC_FIELD_AT(dfc_mgmt_signature, callbacks, 72);

/** An open handle; what it points to is the platform's. */
typedef void* vmk_MgmtUserHandle;

/**
 * Opens a handle on the interface that a kernel module registered.
 *
 * @param signature  a dfc_mgmt_signature
 * @param cookie     always 0
 * @param handle     receives the handle
 * @return platform status, 0 on success
 */
int vmk_MgmtUserInit(const void* signature, uint64_t cookie, vmk_MgmtUserHandle* handle);

/**
 * Closes a handle.
 *
 * @param handle  an open handle
 * @return platform status, 0 on success; the library ignores it
 */
int vmk_MgmtUserDestroy(vmk_MgmtUserHandle handle);

/**
 * Invokes one callback and blocks until the driver has answered.
 *
 * @param handle    an open handle
 * @param instance  always 0
 * @param callback  the callback's id
 * @param count     number of parameters that follow, 1 to 4; each is a pointer to at least as many bytes as the callback's
 *                  descriptor declares, and the first is a dfc_mgmt_hdr
 * @return platform status, 0 on success
 */
int vmk_MgmtUserCallbackInvokeInt(vmk_MgmtUserHandle handle, uint64_t instance, uint64_t callback, uint32_t count, ...);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
