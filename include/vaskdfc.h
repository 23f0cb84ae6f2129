/**
 * @file
 * Diagnostics and management of Fibre Channel and FCoE host bus adapters.
 *
 * One header for applications. It includes the header of every family of operations:
 *
 *     vaskdfc/transport.h      start, stop, board discovery, diagnostic states
 *     vaskdfc/info.h           revisions, driver information, kernel messages
 *     vaskdfc/parameters.h     driver parameters
 *     vaskdfc/link.h           link, nodes, I/O counters, vital product data
 *     vaskdfc/hbaapi.h         adapter and port attributes in the layout of FC-HBA
 *     vaskdfc/statistics.h     port statistics
 *     vaskdfc/mapping.h        target mapping, bindings
 *     vaskdfc/events.h         events, RNID
 *     vaskdfc/scsi.h           SCSI and FCP commands
 *     vaskdfc/fabric.h         ELS, CT, management commands
 *     vaskdfc/vport.h          virtual ports
 *     vaskdfc/mailbox.h        SLI mailboxes, dump and update of configuration regions
 *     vaskdfc/access.h         adapter memory, control registers, PCI configuration space
 *     vaskdfc/reset.h          reset and dump of an adapter
 *     vaskdfc/regions.h        configuration regions 22, 23 and 14, persistent link down
 *     vaskdfc/loopback.h       loopback tests
 *     vaskdfc/priority.h       priority of FCP I/O, logical link speed
 *     vaskdfc/oas.h            OAS: rules for single logical units
 *     vaskdfc/fcoe.h           FCFs, FCoE parameters, FCF connect list
 *     vaskdfc/unimplemented.h  entry points that have no function on this platform
 *
 * Conventions that hold everywhere:
 *
 *   1. Call DFC_InitDiagEnv first. It numbers the adapters densely from 0; every operation on an adapter takes that board
 *      index (0 to 31) as its first argument. Indices are not range-checked.
 *   2. Callers own every record they pass. Pointers must not be null unless an operation says so.
 *   3. Unless an operation lists its results, it returns 0 on success, else the platform's status if that is nonzero, else the
 *      driver's status word. Small result codes are named in vaskdfc/result.h.
 *   4. Operations block until the driver has answered. They may be called from several threads at once; initialisation and
 *      shutdown must not overlap any other call.
 *   5. Records have one layout on 32-bit and 64-bit systems and contain no padding; only dfc_loopback holds pointers.
 */
#ifndef VASKDFC_H
#define VASKDFC_H

#include "vaskdfc/access.h"
#include "vaskdfc/events.h"
#include "vaskdfc/fabric.h"
#include "vaskdfc/fcoe.h"
#include "vaskdfc/hbaapi.h"
#include "vaskdfc/info.h"
#include "vaskdfc/link.h"
#include "vaskdfc/loopback.h"
#include "vaskdfc/mailbox.h"
#include "vaskdfc/mapping.h"
#include "vaskdfc/oas.h"
#include "vaskdfc/parameters.h"
#include "vaskdfc/priority.h"
#include "vaskdfc/regions.h"
#include "vaskdfc/reset.h"
#include "vaskdfc/result.h"
#include "vaskdfc/scsi.h"
#include "vaskdfc/statistics.h"
#include "vaskdfc/transport.h"
#include "vaskdfc/unimplemented.h"
#include "vaskdfc/vport.h"

#endif
