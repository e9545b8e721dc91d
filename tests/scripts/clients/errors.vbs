' What a script can get wrong: refused operations are no errors, wrong calls are.
Option Explicit
Dim api
Set api = CreateObject("DepotIntr.DepotIntrApi")

api.DPUnInitialize 0
api.DPFlushFile 0
api.DPRenameFile 0, "<Work>\a.kra", "<Work>\b.kra"
api.DPFileExists 0, "<Work>\missing.kra"
WScript.Echo "refusals " & Err.Number

On Error Resume Next
api.DPNothing
Report "unknown method"
api.DPUnInitialize
Report "too few arguments"
api.DPUnInitialize 1, 2
Report "too many arguments"
api.DPUnInitialize "abc"
Report "no number"
On Error GoTo 0

' The object is still in order.
Dim session
session = api.DPInitialize()
WScript.Echo "session " & (session > 0)
api.DPUnInitialize session
api.DPUnInitialize session
WScript.Echo "end"

Sub Report(what)
    WScript.Echo what & " " & (Err.Number <> 0)
    Err.Clear
End Sub
