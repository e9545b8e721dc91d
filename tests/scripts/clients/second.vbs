' The second interface as scripts use it, with what they see of failures.
Option Explicit
On Error Resume Next
Dim depots, session, list, stopper
Set depots = CreateObject("DepotIntr.DepotIntrApi")
session = depots.DPInitialize()

WScript.Echo "before " & depots.Quiet(session, True) & ", then " & depots.Quiet(session, True)
WScript.Echo "missing {" & depots.ReadText(session, "<Work>\none.txt") & "} " & depots.LastErrorCode(session)
WScript.Echo "text " & (depots.LastErrorText(session) <> "")
WScript.Echo "found " & UBound(depots.Find(session, "<Work>\Sessions")) & " " & depots.LastErrorCode(session)
WScript.Echo "no folder " & IsEmpty(depots.Find(session, "<Work>\none")) & " " & depots.LastErrorCode(session)
WScript.Echo "chosen " & UBound(depots.ChosenFiles(session))
WScript.Echo "stale " & depots.Exists(4711, "<Work>") & " " & depots.LastErrorCode(4711)

WScript.Echo "written " & depots.WriteText(session, "<Work>\Sessions\two.txt", "two")
Set stopper = New Stopping
WScript.Echo "stopped " & depots.Copy(session, "<Work>\Sessions", "<Work>\Copy", False, stopper) & " " & depots.LastErrorCode(session) & " after " & stopper.Calls
Set stopper = New Silent
WScript.Echo "no method " & depots.Copy(session, "<Work>\Sessions", "<Work>\Other", False, stopper) & " " & depots.LastErrorCode(session)
WScript.Echo "errors " & Err.Number

Set list = depots.Depots(session)
WScript.Echo "depots " & list.Count & " " & list(1).Key & " " & list.Item("work").Name
WScript.Echo "errors " & Err.Number
WScript.Echo list("none").Key
WScript.Echo "no depot " & (Err.Number <> 0)
Err.Clear
depots.Exists session
WScript.Echo "too few " & (Err.Number <> 0)
Err.Clear
depots.Exists session, depots
WScript.Echo "an object " & (Err.Number <> 0)
Err.Clear
depots.DPUnInitialize session
WScript.Echo "ended " & list(1).Key & " " & list(1).Reachable & " " & depots.LastErrorCode(0)
WScript.Echo "end"

Class Stopping
    Public Calls
    Public Function Progress(filesDone, filesInAll, bytesDone)
        Calls = Calls + 1
        Progress = False
    End Function
End Class

Class Silent
    Public Calls
End Class
