' A client in Japan. Its users save it in their code page or as UTF-16. What it finds out is in the
' file that it is given last, as UTF-16.
Option Explicit
Const FOLDER = "<予定表>\ソース"
Dim api, session, list, count, index, value, copy, files, report
Set files = CreateObject("Scripting.FileSystemObject")
Set report = files.CreateTextFile(WScript.Arguments(WScript.Arguments.Count - 1), True, True)
Set api = CreateObject("DepotIntr.DepotIntrApi")
session = api.DPInitialize()
report.WriteLine api.DPGetDefaultDPPath(session)
report.WriteLine api.DPGetPathFromDisplayName(session, "<社内の予定表>\ソース\表.kra")
report.WriteLine Mid(api.DPPathConvertDPtoFS(FOLDER & "\表.kra"), 3)

api.DPLoadFile session, FOLDER & "\表.kra"
api.DPGetProfileString session, "Plan", "Title", "(not set)", value, 260
report.WriteLine value
api.DPSetProfileString session, "Plan", "Title", "new"
api.DPFlushFile session

copy = api.DPMakeCopyFromSrcFile(session, FOLDER & "\十.kra")
report.WriteLine copy
api.DPRenameFile session, copy, FOLDER & "\ソ.kra"
api.DPDeleteFile session, FOLDER & "\十.kra"

list = 0
count = api.DPFindInit(list, FOLDER, ".kra", 1)
For index = 0 To count - 1
    report.WriteLine "listed " & api.DPFindNext(list, index)
Next
api.DPUnInitialize list
api.DPUnInitialize session
report.WriteLine "end"
report.Close
