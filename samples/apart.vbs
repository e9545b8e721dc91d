' A depot that is kept for the time when its server is away (Offline1 = 1): the same calls work then, and what is
' written waits for the server.
Option Explicit

Const kProfile = "<Company>\Sessions\reception.kre"
Dim depots, session, count
Set depots = CreateObject("DepotIntr.DepotIntrApi")
session = depots.DPInitialize()
depots.DPLoadFile session, kProfile
depots.DPGetProfileString session, "Apart", "Edits", "0", count, 260
depots.DPSetProfileString session, "Apart", "Edits", CStr(count + 1)
depots.DPUnInitialize session
WScript.Echo kProfile & ": " & count & " edits before, one more now"
