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
Dim list, count
list = 0
count = api.DPFindInit(list, "<Work>", ".kra", 1)
WScript.Echo "listed " & count & " " & api.DPFindNext(list, 0)
api.DPUnInitialize list
WScript.Echo "end"
