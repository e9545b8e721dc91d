' Whole files and folders, in depots and beside them, with a reason for each failure.
Option Explicit

Const TEXT_UTF8 = 2
Dim depots, session, depot, path, progress
Set depots = CreateObject("DepotIntr.DepotIntrApi")
session = depots.DPInitialize()
depots.Quiet session, True

For Each depot In depots.Depots(session)
    If depot.Key = "Work" Then WScript.Echo depot.Key & " is " & depot.Name & ", reachable: " & depot.Reachable
Next

WScript.Echo "There: " & depots.Exists(session, "<Work>\Sessions\office.kre")
Check depots.MakeFolder(session, "<Work>\Copies", True)
Set progress = New Counter
Check depots.Copy(session, "<Work>\Sessions", "<Work>\Copies\", True, progress)
WScript.Echo "Copied: " & progress.Files & " files"
For Each path In depots.Find(session, "<Work>\Copies\Sessions", ".kre")
    WScript.Echo path
Next

Check depots.WriteText(session, "<Work>\Copies\note.txt", "Moved in June", TEXT_UTF8)
WScript.Echo depots.ReadText(session, "<Work>\Copies\note.txt")
Check depots.Move(session, "<Work>\Copies\note.txt", "<Work>\Copies\Sessions\office.kre")
depots.DPUnInitialize session
WScript.Echo "Session ended."

' A call that fails returns False; the session knows why.
Sub Check(done)
    If Not done Then WScript.Echo "Failed with " & depots.LastErrorCode(session)
End Sub

Class Counter
    Public Files
    Public Function Progress(filesDone, filesInAll, bytesDone)
        Files = filesDone
        Progress = True
    End Function
End Class
