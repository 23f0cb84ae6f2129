/**
 * @file
 * Small result codes. Which of them an operation returns, and when, stands in that operation's own block.
 */
#ifndef VASKDFC_RESULT_H
#define VASKDFC_RESULT_H

/** @name The library's own codes
 *  @{ */
#define DFC_OK 0u          /**< done */
#define DFC_FAILED 1u      /**< the call failed in the platform or in the driver */
#define DFC_UNSUPPORTED 2u /**< not supported here; also the general failure of driver information */
#define DFC_TOO_SMALL 7u   /**< it does not fit: the caller's room, a region, or a record of another version */
#define DFC_NO_MEMORY 12u  /**< memory could not be allocated */
/** @} */

/** @name The status values of FC-HBA, returned by the operations of vaskdfc/hbaapi.h
 *  @{ */
#define HBA_STATUS_OK 0u                  /**< done */
#define HBA_STATUS_ERROR 1u               /**< any failure that has no status of its own */
#define HBA_STATUS_ERROR_ILLEGAL_WWN 5u   /**< there is no port of this WWN */
#define HBA_STATUS_ERROR_ILLEGAL_INDEX 6u /**< there is no port at this index */
#define HBA_STATUS_ERROR_MORE_DATA 7u     /**< there is more than the caller has room for */
#define HBA_STATUS_ERROR_STALE_DATA 8u    /**< the ports have changed since the last RefreshInformation */
/** @} */

#endif
