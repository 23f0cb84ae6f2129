/*
 * Small result codes. Which of them an operation returns, and when, stands in that operation's own block.
 */
#ifndef VASKDFC_RESULT_H
#define VASKDFC_RESULT_H

/* The library's own codes. */
#define DFC_OK 0u          /* done */
#define DFC_FAILED 1u      /* the call failed in the platform or in the driver */
#define DFC_UNSUPPORTED 2u /* not supported here; also the general failure of driver information */

/* The status values of FC-HBA, returned by the operations of vaskdfc/hbaapi.h. */
#define HBA_STATUS_OK 0u
#define HBA_STATUS_ERROR 1u
#define HBA_STATUS_ERROR_ILLEGAL_WWN 5u
#define HBA_STATUS_ERROR_ILLEGAL_INDEX 6u
#define HBA_STATUS_ERROR_STALE_DATA 8u

#endif
