' Creates the component by its name and reads a value of a sample profile.
Option Explicit
Dim depots, session, value
Set depots = CreateObject("DepotIntr.DepotIntrApi")
session = depots.DPInitialize()
depots.DPLoadFile session, "<Work>\Sessions\office.kre"
depots.DPGetProfileString session, "Host", "Name", "(not set)", value, 260
WScript.Echo value
If WScript.Arguments.Count > 0 Then
    ' Keeps the library loaded until the file is there.
    Dim files
    Set files = CreateObject("Scripting.FileSystemObject")
    Do Until files.FileExists(WScript.Arguments(0))
    Loop
    depots.DPGetProfileString session, "PROFILE", "Title", "(not set)", value, 260
    WScript.Echo value
End If
depots.DPUnInitialize session
WScript.Echo "end"
