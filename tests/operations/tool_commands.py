"""How the tool reaches each operation: the command that does and the arguments with which a test runs it, or why there is none."""

from typing import NamedTuple


class Reach(NamedTuple):
    """A command that reaches an operation. `within` is the operation through which it does, if the tool does not call it itself;
    `after` is a command line that must come before it."""

    command: str
    arguments: str = ""
    within: str = ""
    after: str = ""


_ARRAY_PORT = "50:5a:41:00:0c:00:10:01"
_VIRTUAL_PORT = "10:01:00:5a:41:56:03:10"
_SET_FCOE = "0 --vlan 1002 --yes"
_CONNECT = "0 --vlan 1002 --names 20:01:5a:41:20:00:a0:01 10:00:5a:41:20:00:a0:01 --yes"
_OLDER_IMAGE = "3 22 --file region22.bin --yes"
_OBJECT = "0 0x9b00 1 0 0 0 0 0x1ac" + 31 * " 0" + " 1 --yes"  # a request whose answer may be longer than a mailbox

REACHED = {
    "CallVer": Reach("version"),
    "DFC_FCoEGetFCFConnectList": Reach("fcoe connect list", "0"),
    "DFC_FCoEGetFCFList": Reach("fcoe fcf list", "0"),
    "DFC_FCoEGetParams": Reach("fcoe params get", "0"),
    "DFC_FCoESetFCFConnectList": Reach("fcoe connect add", _CONNECT),
    "DFC_FCoESetParams": Reach("fcoe params set", _SET_FCOE),
    "DFC_FreeDiagEnv": Reach("list"),
    "DFC_GetAllNodeInfoByWWN": Reach("npiv nodes", "1"),
    "DFC_GetDrvInfo": Reach("show", "0"),
    "DFC_GetLibVer": Reach("version"),
    "DFC_GetPersistLinkDown": Reach("linkdown get", "0"),
    "DFC_InitDiagEnv": Reach("list"),
    "DFC_InitR22": Reach("region init", "0 22 --yes"),
    "DFC_InitR23": Reach("region init", "0 23 --yes"),
    "DFC_IssueDumpMBox": Reach("region dump", "0 23"),
    "DFC_IssueMboxWithRetry": Reach("mailbox send", "3 0x200 0 0 0 --yes"),
    "DFC_IssueMboxWithRetryEx": Reach("region dump", "3 22", within="LEG_IssueDumpMBox"),
    "DFC_IssueMboxWithRetryV2": Reach("mailbox send", "0 0x200 --yes"),
    "DFC_IssueUpdateCfgMBox": Reach("region init", "0 23 --yes", within="DFC_InitR23"),
    "DFC_NPIVReadyTest": Reach("npiv status", "1"),
    "DFC_SendELSCmd": Reach("els send", f"0 {_ARRAY_PORT} echo"),
    "DFC_SetPersistLinkDown": Reach("linkdown set", "0 on --yes"),
    "DFC_SetRegion14": Reach("region write", "0 14 --file region14.bin --yes"),
    "DFC_SetRegion22": Reach("region write", "0 22 --file region22.bin --yes"),
    "DFC_VPGetAttrib": Reach("npiv show", f"1 {_VIRTUAL_PORT}"),
    "DFC_VPGetList": Reach("npiv list", "1"),
    "DFC_VPGetResource": Reach("npiv status", "1"),
    "EventMissedCount": Reach("events"),
    "EventTest": Reach("event-test", "0"),
    "GetAdapterAttributes": Reach("show", "0"),
    "GetAdapterPortAttributes": Reach("show", "0"),
    "GetCTInfo": Reach("nameserver", "0", within="SendCTPassThru"),
    "GetDfcRev": Reach("version"),
    "GetDiscoveredPortAttributes": Reach("ports", "0 --discovered"),
    "GetEventBuffer": Reach("events"),
    "GetFcpBindList": Reach("bindings", "0"),
    "GetFcpTargetMapping": Reach("luns", "0"),
    "GetPortAttributesByIndex": Reach("ports", "0 --index 0"),
    "GetPortAttributesByWWN": Reach("ports", f"0 --wwn {_ARRAY_PORT}"),
    "GetPortStatistics": Reach("stats", "0"),
    "GetRegion23": Reach("region show", "0 23", after="region init 0 23 --yes"),
    "GetRNIDMgmtInfo": Reach("rnid get", "0"),
    "IssueExtendedSLIConfig": Reach("mailbox send", _OBJECT, within="DFC_IssueMboxWithRetryV2"),
    "IssueMboxEx": Reach("region dump", "3 22", within="DFC_IssueMboxWithRetryEx"),
    "LEG_IssueDumpMBox": Reach("region dump", "3 22"),
    "LegacySetRegion22": Reach("region write", _OLDER_IMAGE, within="DFC_SetRegion22"),
    "LegacySetRegion23": Reach("region init", "3 23 --yes", within="DFC_InitR23"),
    "LogMsg": Reach("log-message", "hello"),
    "ModInfo": Reach("version"),
    "RefreshInformation": Reach("refresh", "0"),
    "ResetStatistics": Reach("stats", "0 --reset"),
    "SendCTPassThru": Reach("nameserver", "0"),
    "SendFcpCmdByWWN": Reach("fcp raw", f"0 {_ARRAY_PORT} 0 00 00 00 00 00 00 --yes", within="SendFcpCmdEx"),
    "SendFcpCmdEx": Reach("fcp raw", f"0 {_ARRAY_PORT} 0 00 00 00 00 00 00 --yes"),
    "SendMgmtCommand": Reach("mgmt send", "0 0100000000000000 request.bin --yes"),
    "SendMgmtResponse": Reach("mgmt respond", "0 request.bin --yes"),
    "SendReadCapacity": Reach("scsi capacity", f"0 {_ARRAY_PORT} 0"),
    "SendReportLUNs": Reach("scsi luns", f"0 {_ARRAY_PORT}"),
    "SendRNID": Reach("rnid send", f"0 {_ARRAY_PORT}"),
    "SendScsiCmd": Reach("scsi raw", f"0 {_ARRAY_PORT} 0 00 00 00 00 00 00 --yes"),
    "SendScsiCmdByWWN": Reach("scsi inquiry", f"0 {_ARRAY_PORT} 0", within="SendScsiInquiry"),
    "SendScsiInquiry": Reach("scsi inquiry", f"0 {_ARRAY_PORT} 0"),
    "SendScsiRead": Reach("scsi read", f"0 {_ARRAY_PORT} 0 --file read.bin"),
    "SendScsiWrite": Reach("scsi write", f"0 {_ARRAY_PORT} 0 --file block.bin --yes"),
    "SetBrdEnv": Reach("set-state", "0 0"),
    "SetDiagEnv": Reach("set-state", "all 3 --yes"),
    "SetRNIDMgmtInfo": Reach("rnid set", "0 --udp-port 1234 --yes"),
}

_NO_COMMAND = "no command asks for it"
_NO_FUNCTION = "has no function on this platform"

# Operations that no command reaches, and why. A row of which this is no longer true fails the test.
NOT_REACHED = {
    "AddBind": _NO_FUNCTION,
    "DelBind": _NO_FUNCTION,
    "DFC_ConfigLoopback": _NO_COMMAND,
    "DFC_DeleteAuthConfig": _NO_FUNCTION,
    "DFC_DisableAuthentication": _NO_FUNCTION,
    "DFC_EnableAuthentication": _NO_FUNCTION,
    "DFC_EndLoopback": _NO_COMMAND,
    "DFC_GetAuthConfig": _NO_FUNCTION,
    "DFC_GetAuthConfigList": _NO_FUNCTION,
    "DFC_GetAuthPassword": _NO_FUNCTION,
    "DFC_GetAuthStatus": _NO_FUNCTION,
    "DFC_GetDriverDumpRegion": _NO_COMMAND,
    "DFC_GetFcpTargetMappingByWWN": _NO_FUNCTION,
    "DFC_GetFcpTargetMappingV2": "`luns` asks the units of GetFcpTargetMapping itself, so that none hides the others",
    "DFC_GetLinkInfo": _NO_COMMAND,
    "DFC_GetOASLunList": _NO_COMMAND,
    "DFC_GetQoSLinkSpeed": _NO_COMMAND,
    "DFC_GetRegion22": "`region show` decodes the whole image, of which this delivers the entries alone",
    "DFC_InitiateAuthentication": _NO_FUNCTION,
    "DFC_QoSGetConfig": _NO_COMMAND,
    "DFC_QoSGetGlobalFlag": _NO_COMMAND,
    "DFC_QoSSetConfig": _NO_COMMAND,
    "DFC_QoSSetGlobalFlag": _NO_COMMAND,
    "DFC_ReadPciCfg": _NO_COMMAND,
    "DFC_ResetAdapter": _NO_COMMAND,
    "DFC_RunLoopbackTest": _NO_COMMAND,
    "DFC_SendFcpCmd": "SendFcpCmdEx does the same with an extra argument of 0",
    "DFC_SendHaldeCommand": _NO_FUNCTION,
    "DFC_SendReadCapacityByWWN": "SendReadCapacity does the same with a whole LUN",
    "DFC_SendReportLUNsByWWN": "SendReportLUNs does the same; the local port plays no part",
    "DFC_SendScsiInquiryByWWN": "SendScsiInquiry does the same; the local port plays no part",
    "DFC_SetAuthConfig": _NO_FUNCTION,
    "DFC_SetAuthPassword": _NO_FUNCTION,
    "DFC_SetDumpEnv": _NO_COMMAND,
    "DFC_SetOASLun": _NO_COMMAND,
    "DFC_VPCreate": _NO_FUNCTION,
    "DFC_VPDelete": _NO_FUNCTION,
    "DFC_VPDeleteV2": _NO_FUNCTION,
    "FreeDiagEnv": "older name of DFC_FreeDiagEnv",
    "GetCfgParam": _NO_COMMAND,
    "GetFcpPersistentBinding": "reports an empty list whatever there is; `bindings` shows what GetFcpBindList reads",
    "GetIOinfo": _NO_COMMAND,
    "GetLinkInfo": "older name of DFC_GetLinkInfo",
    "GetNodeInfo": _NO_COMMAND,
    "GetVPDInfo": _NO_COMMAND,
    "InitDiagEnv": "older form of DFC_InitDiagEnv",
    "IssueMbox": "DFC_IssueMboxWithRetry does the same with a single attempt",
    "ReadCtlReg": _NO_COMMAND,
    "ReadMem": _NO_COMMAND,
    "ReadPciCfg": "older name of DFC_ReadPciCfg",
    "SendFcpCmd": "older name of DFC_SendFcpCmd",
    "SetCfgParam": _NO_COMMAND,
    "SwapPciData": _NO_COMMAND,
    "trel_GetTimeOfDay": "the library's log calls it for every line",
    "trel_isLeap": "knows no adapter: the calendar of the library's log",
    "WriteCtlReg": _NO_COMMAND,
    "WriteMem": _NO_COMMAND,
    "WritePciCfg": _NO_COMMAND,
}
