/**
 * @file
 * What the driver keeps about an adapter's link, the nodes it knows, its I/O and its vital product data (VPD). The library passes
 * these records on unchanged; fields named after their offset mean what the driver says.
 */
#ifndef VASKDFC_LINK_H
#define VASKDFC_LINK_H

#include "vaskdfc/hbaapi.h"
#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** The link of an adapter. */
typedef struct dfc_link_info {
  uint32_t words_0[5];   /**< The driver's. */
  uint8_t bytes_20[4];   /**< The driver's. */
  uint8_t bytes_24[128]; /**< The driver's. */
  uint32_t words_152[4]; /**< The driver's. */
} dfc_link_info;
VASKDFC_RECORD_SIZE(dfc_link_info, 168);
VASKDFC_FIELD_AT(dfc_link_info, words_152, 152);

/** A remote node as an adapter knows it. */
typedef struct dfc_node_info {
  uint16_t half_0;  /**< The driver's. */
  uint16_t half_2;  /**< The driver's. */
  uint32_t word_4;  /**< The driver's. */
  HbaWwn name_8;    /**< The driver's. */
  HbaWwn name_16;   /**< The driver's. */
  uint32_t word_24; /**< The driver's. */
} dfc_node_info;
VASKDFC_RECORD_SIZE(dfc_node_info, 28);
VASKDFC_FIELD_AT(dfc_node_info, name_16, 16);

/** The remote nodes that an adapter knows. */
typedef struct dfc_node_table {
  dfc_node_info entries[512]; /**< As many as the operation returns; the others are 0. */
} dfc_node_table;
VASKDFC_RECORD_SIZE(dfc_node_table, 14336);

/** I/O counters of an adapter. */
typedef struct dfc_io_info {
  uint32_t counters[24]; /**< The driver's. */
} dfc_io_info;
VASKDFC_RECORD_SIZE(dfc_io_info, 96);

/** Vital product data. The three texts fill their fields and need not end with a NUL. */
typedef struct dfc_vpd_info {
  uint32_t selector;     /**< In: what is asked for; out: the first word of the reply. */
  char text_4[256];      /**< The driver's. */
  char text_260[80];     /**< The driver's. */
  char text_340[256];    /**< The driver's. */
  uint32_t words_596[5]; /**< The driver's. */
} dfc_vpd_info;
VASKDFC_RECORD_SIZE(dfc_vpd_info, 616);
VASKDFC_FIELD_AT(dfc_vpd_info, text_340, 340);
VASKDFC_FIELD_AT(dfc_vpd_info, words_596, 596);

/** @name Results of GetVPDInfo
 *  @{ */
#define DFC_VPD_BAD0084 1u /**< driver status 0xbad0084 */
#define DFC_VPD_FAILED 3u  /**< any other failure */
/** @} */

/**
 * Describes the link of an adapter.
 *
 * @param board  board index
 * @param info   receives the description; untouched on failure
 * @return DFC_OK; DFC_FAILED on any failure
 *
 * Driver callback: TREL_MGMT_LINKINFO.
 */
uint32_t DFC_GetLinkInfo(uint32_t board, dfc_link_info* info);

/**
 * Older name of DFC_GetLinkInfo.
 *
 * @param board  as in DFC_GetLinkInfo
 * @param info   as in DFC_GetLinkInfo
 * @return the result of DFC_GetLinkInfo
 */
uint32_t GetLinkInfo(uint32_t board, dfc_link_info* info);

/**
 * Lists the remote nodes that an adapter knows.
 *
 * @param board  board index
 * @param nodes  receives the nodes; all further entries are 0, and on failure all of them
 * @return number of nodes, at most 512; 0 on any failure as well, which only the log tells from an empty list
 *
 * Driver callback: TREL_MGMT_NODEINFO.
 */
uint32_t GetNodeInfo(uint32_t board, dfc_node_table* nodes);

/**
 * Reads the I/O counters of an adapter.
 *
 * @param board  board index
 * @param info   receives the counters; untouched on failure
 * @return DFC_OK; DFC_FAILED on any failure
 *
 * Driver callback: TREL_MGMT_IOINFO.
 */
uint32_t GetIOinfo(uint32_t board, dfc_io_info* info);

/**
 * Reads vital product data of an adapter.
 *
 * @param board  board index
 * @param info   its selector says what is asked for; receives the data; untouched on failure
 * @return DFC_OK; DFC_VPD_BAD0084; DFC_VPD_FAILED
 *
 * Driver callback: TREL_MGMT_GET_VPD.
 */
uint32_t GetVPDInfo(uint32_t board, dfc_vpd_info* info);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
