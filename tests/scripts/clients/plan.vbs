' A client in Japan. Its users save it in their code page or as UTF-16.
Option Explicit
Const FOLDER = "<予定表>\ソース"
Dim api, session, list, count, index, value, copy
Set api = CreateObject("DepotIntr.DepotIntrApi")
session = api.DPInitialize()
WScript.Echo api.DPGetDefaultDPPath(session)
WScript.Echo api.DPGetPathFromDisplayName(session, "<社内の予定表>\ソース\表.kra")
WScript.Echo Mid(api.DPPathConvertDPtoFS(FOLDER & "\表.kra"), 3)

api.DPLoadFile session, FOLDER & "\表.kra"
api.DPGetProfileString session, "Plan", "Title", "(not set)", value, 260
WScript.Echo value
api.DPSetProfileString session, "Plan", "Title", "new"
api.DPFlushFile session

copy = api.DPMakeCopyFromSrcFile(session, FOLDER & "\十.kra")
WScript.Echo copy
api.DPRenameFile session, copy, FOLDER & "\ソ.kra"
api.DPDeleteFile session, FOLDER & "\十.kra"

list = 0
count = api.DPFindInit(list, FOLDER, ".kra", 1)
For index = 0 To count - 1
    WScript.Echo "listed " & api.DPFindNext(list, index)
Next
api.DPUnInitialize list
api.DPUnInitialize session
WScript.Echo "end"
