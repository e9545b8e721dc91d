' Paths without a session: every answer comes from a temporary one.
Option Explicit
Dim api
Set api = CreateObject("DepotIntr.DepotIntrApi")
WScript.Echo api.DPGetDefaultDPPath(0)
WScript.Echo api.DPGetDepotDisplayPath(0, "<Work>\Sessions\office.kre")
WScript.Echo api.DPGetPathFromDisplayName(0, "<my depot of work>\Sessions\office.kre")
WScript.Echo Mid(api.DPPathConvertDPtoFS("<Work>\Sessions\office.kre"), 3)
WScript.Echo "{" & api.DPGetPathFromDisplayName(0, "<nobody>\a.kra") & "}"
WScript.Echo "{" & api.DPGetDefaultDPPath(Empty) & "}"
WScript.Echo "end"
