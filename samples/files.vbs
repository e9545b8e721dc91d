' Files move within depots and between them: the same calls in a folder and in a directory.
Option Explicit

Dim depots, session, copy
Set depots = CreateObject("DepotIntr.DepotIntrApi")
session = depots.DPInitialize()

' A copy beside the file takes the first name that is free.
copy = depots.DPMakeCopyFromSrcFile(session, "<Company>\Sessions\reception.kre")
WScript.Echo "Copied to:  " & copy
depots.DPRenameFile session, copy, "<Company>\Sessions\gate.kre"
WScript.Echo "Renamed:    " & Host("<Company>\Sessions\gate.kre")

' A Skein profile in the directory opens two files of a folder. Published, it opens copies beside itself.
depots.DPLoadFile session, "<Company>\counter.kra"
WScript.Echo "Before:     " & Clients()
depots.DPPublishSkesDepFiles session
WScript.Echo "Published:  " & Clients()
' The directory receives the profile now; it would at the latest at the session's end.
depots.DPFlushFile session
WScript.Echo "The copies: " & Host("<Company>\office.kre") & ", " & Host("<Company>\warehouse.kre")

depots.DPDeleteFile session, "<Company>\Sessions\gate.kre"
WScript.Echo "Deleted:    <Company>\Sessions\gate.kre"
depots.DPUnInitialize session
WScript.Echo "Session ended."

Function Clients()
    Clients = Value("Clients", "C1") & ", " & Value("Clients", "C2")
End Function

Function Host(profile)
    depots.DPLoadFile session, profile
    Host = Value("Host", "Name")
End Function

Function Value(section, key)
    Dim text
    depots.DPGetProfileString session, section, key, "(not set)", text, 260
    Value = text
End Function
