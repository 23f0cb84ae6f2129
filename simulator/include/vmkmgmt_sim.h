/*
 * The simulated platform: what its users set and what they may see.
 *
 * libvmkmgmt.so.0 takes the place of the host's management library and answers as a host with a driver and adapters would.
 * docs/simulator.md describes it.
 */
#ifndef VMKMGMT_SIM_H
#define VMKMGMT_SIM_H

/* Environment variables, read when a process opens its first handle. */
#define VMKMGMT_SIM_SCENARIO "VMKMGMT_SIM_SCENARIO" /* scenario file; unset: the built-in scenario */
#define VMKMGMT_SIM_TRACE "VMKMGMT_SIM_TRACE"       /* file that gets one JSON line per callback; unset: no trace */
#define VMKMGMT_SIM_STATE "VMKMGMT_SIM_STATE"       /* folder where state outlives the process; unset: it does not */

/* Results of the three platform functions. */
typedef enum vmkmgmt_sim_platform_status {
  VMKMGMT_SIM_OK = 0,

  /* vmk_MgmtUserInit: the interface and its signature. */
  VMKMGMT_SIM_NOT_REGISTERED = 0x0BAD1001,      /* no driver registered an interface of this name */
  VMKMGMT_SIM_BAD_VERSION = 0x0BAD1002,         /* the driver speaks another interface version */
  VMKMGMT_SIM_BAD_VENDOR = 0x0BAD1003,          /* the driver is another vendor's */
  VMKMGMT_SIM_BAD_CALLBACK_COUNT = 0x0BAD1004,  /* the driver has more or fewer callbacks */
  VMKMGMT_SIM_BAD_CALLBACK_ID = 0x0BAD1005,     /* a descriptor names another callback than the driver's at its position */
  VMKMGMT_SIM_BAD_LOCATION = 0x0BAD1006,        /* a descriptor's callback does not run in the kernel */
  VMKMGMT_SIM_BAD_HANDLER = 0x0BAD1007,         /* a descriptor brings a user-space handler */
  VMKMGMT_SIM_BAD_SYNCHRONOUS = 0x0BAD1008,     /* a descriptor is not synchronous */
  VMKMGMT_SIM_BAD_PARAMETER_COUNT = 0x0BAD1009, /* a descriptor has more or fewer parameters than the driver's callback */
  VMKMGMT_SIM_BAD_PARAMETER_SIZE = 0x0BAD100A,  /* a descriptor's parameter has another size */
  VMKMGMT_SIM_BAD_PARAMETER_USAGE = 0x0BAD100B, /* a descriptor's parameter has another direction */

  /* vmk_MgmtUserInit: the simulator itself. Standard error says more, once per process. */
  VMKMGMT_SIM_BAD_SCENARIO = 0x0BAD1010, /* the scenario cannot be read or is not valid */
  VMKMGMT_SIM_BAD_TRACE = 0x0BAD1011,    /* the trace file cannot be written */
  VMKMGMT_SIM_BAD_STATE = 0x0BAD1012,    /* the state folder cannot be used, or a file in it is damaged */

  /* Any of the three. */
  VMKMGMT_SIM_BAD_ARGUMENT = 0x0BAD1020, /* a null address, or a cookie that is not 0 */
  VMKMGMT_SIM_BAD_HANDLE = 0x0BAD1021,   /* not an open handle: never opened, or destroyed */
  VMKMGMT_SIM_INTERNAL = 0x0BAD1022,     /* the simulator ran out of memory or of another resource */

  /* vmk_MgmtUserCallbackInvokeInt. */
  VMKMGMT_SIM_BAD_INSTANCE = 0x0BAD1030,     /* the instance is not 0 */
  VMKMGMT_SIM_UNKNOWN_CALLBACK = 0x0BAD1031, /* the driver has no callback of this id */
  VMKMGMT_SIM_BAD_COUNT = 0x0BAD1032         /* not the callback's number of parameters */
} vmkmgmt_sim_platform_status;

/* Driver statuses: the header's status word after a callback. */
typedef enum vmkmgmt_sim_driver_status {
  VMKMGMT_SIM_DRIVER_OK = 0,
  VMKMGMT_SIM_DRIVER_NO_SUCH_PORT = 0x0BAD0003,       /* no discovered port at this index; no port of this WWN */
  VMKMGMT_SIM_DRIVER_NO_DUMP_ROOM = 0x0BAD0003,       /* of a dump region: its descriptor is longer than the room */
  VMKMGMT_SIM_DRIVER_NO_RULE_ROOM = 0x0BAD0006,       /* the adapter keeps no more OAS rules */
  VMKMGMT_SIM_DRIVER_NO_SUCH_REGION = 0x0BAD0007,     /* no dump region of this identifier */
  VMKMGMT_SIM_DRIVER_LOOP_OPEN = 0x0BAD000A,          /* external loopback, but nothing comes back */
  VMKMGMT_SIM_DRIVER_NO_SUCH_TARGET = 0x0BAD000F,     /* of OAS rules: no such remote port, and no rules about it */
  VMKMGMT_SIM_DRIVER_NO_SUCH_LOCAL_PORT = 0x0BAD0010, /* of OAS rules: not a port of the adapter */
  VMKMGMT_SIM_DRIVER_NO_DUMP = 0x0BAD0014,            /* the firmware has dumped nothing into the region */
  VMKMGMT_SIM_DRIVER_NOT_SUPPORTED = 0x0BAD0020,      /* neither by this driver nor, perhaps, by this generation of adapter */
  VMKMGMT_SIM_DRIVER_WRONG_MODE = 0x0BAD0021,         /* the port is in a mode that does not allow this */
  VMKMGMT_SIM_DRIVER_BAD_RULE = 0x0BAD002B,           /* a key that names no OAS rule, or one of another adapter's port */
  VMKMGMT_SIM_DRIVER_NO_SUCH_RULE = 0x0BAD002C,       /* there is no such OAS rule to disable */
  VMKMGMT_SIM_DRIVER_SWITCHED_OFF = 0x0BAD0030,       /* a parameter switches OAS off */
  VMKMGMT_SIM_DRIVER_BUSY = 0x0BAD0039,               /* ask again later */
  VMKMGMT_SIM_DRIVER_INDEX_OUT_OF_RANGE = 0x0BAD005D, /* the port list ends before this index; a reply does not fit */
  VMKMGMT_SIM_DRIVER_NO_VPD = 0x0BAD0084,             /* no vital product data under this selector */
  VMKMGMT_SIM_DRIVER_NO_ROOM = 0x0BAD00B4,            /* a list is longer than the room */
  VMKMGMT_SIM_DRIVER_RULE_WAITS = 0x0BAD0100,         /* the OAS rule is set, but its remote port is not there */
  VMKMGMT_SIM_DRIVER_NO_SUCH_BOARD = 0x0BAD0201,      /* no adapter has this driver board number */
  VMKMGMT_SIM_DRIVER_NOT_READY = 0x0BAD0202,          /* the adapter's firmware does not run */
  VMKMGMT_SIM_DRIVER_STATE_NOT_SAVED = 0x0BAD0203,    /* the state folder failed; what it held before still stands */
  VMKMGMT_SIM_DRIVER_BAD_COMMAND = 0x0BAD0204,        /* the callback knows no such sub-command, type, code or size */
  VMKMGMT_SIM_DRIVER_OUT_OF_RANGE = 0x0BAD0205        /* a value, an address or a length that the driver or the adapter refuses */
} vmkmgmt_sim_driver_status;

/* How the adapter completes a mailbox: its status halfword, and the completion word of a dump. */
typedef enum vmkmgmt_sim_mailbox_status {
  VMKMGMT_SIM_MAILBOX_OK = 0,
  VMKMGMT_SIM_MAILBOX_UNKNOWN_COMMAND = 0x0101, /* this generation of adapter has no such command, request or dump type */
  VMKMGMT_SIM_MAILBOX_BAD_REQUEST = 0x0102,     /* a length, an offset or a marker that the command refuses */
  VMKMGMT_SIM_MAILBOX_NO_SUCH_OBJECT = 0x0103,  /* no object of this name */
  VMKMGMT_SIM_MAILBOX_NO_ROOM = 0x0104,         /* an object too many or too large */
  VMKMGMT_SIM_REGION_EMPTY = 0xFFFD,            /* a region that was never written, or that no adapter has */
  VMKMGMT_SIM_REGION_UNREADABLE = 0xFFF7,       /* only when a scenario says so */
  VMKMGMT_SIM_REGION_INVALID = 0xFFF6           /* only when a scenario says so */
} vmkmgmt_sim_mailbox_status;

#endif
