/**
 * @file
 * Driver parameters: the table of tunable values that the driver keeps for every adapter. What an entry holds, and what a value
 * means, is the driver's.
 */
#ifndef VASKDFC_PARAMETERS_H
#define VASKDFC_PARAMETERS_H

#include "vaskdfc/record.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/** One parameter; the layout is the driver's. */
typedef struct dfc_cfg_entry {
  uint8_t bytes[132]; /**< The driver's. */
} dfc_cfg_entry;
VASKDFC_RECORD_SIZE(dfc_cfg_entry, 132);

/** The parameters of one adapter. */
typedef struct dfc_cfg_table {
  dfc_cfg_entry entries[64]; /**< As many as the operation returns; the others are 0 unless the driver wrote them. */
} dfc_cfg_table;
VASKDFC_RECORD_SIZE(dfc_cfg_table, 8448);

/**
 * Reads the parameters of an adapter.
 *
 * @param board  board index
 * @param table  receives the parameters; what the driver leaves unwritten is 0, also when the call fails
 * @return number of parameters; 0 on any failure as well, which only the log tells from an empty table
 *
 * Driver callback: TREL_MGMT_GETCFG.
 */
uint32_t GetCfgParam(uint32_t board, dfc_cfg_table* table);

/**
 * Changes one parameter of an adapter.
 *
 * @param board  board index
 * @param entry  position of the parameter in the table, judged by the driver
 * @param value  new value, judged by the driver
 * @return DFC_OK; DFC_FAILED on any failure
 *
 * Driver callback: TREL_MGMT_SETCFG.
 */
uint32_t SetCfgParam(uint32_t board, uint32_t entry, uint32_t value);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
