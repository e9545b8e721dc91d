Attribute VB_Name = "Anywhere"
' VBA of a 64-bit Office. "As Object" binds by name: a reference to the type library would pass a
' handle as 32 bits, and DPInitialize writes 64. Variables are passed by reference by themselves.
Option Explicit

Public Sub ShowDepots()
    Dim depots As Object, session As Long, value As String, path As Variant
    Set depots = CreateObject("DepotIntr.DepotIntrApi")
    session = depots.DPInitialize()
    depots.Quiet session, True
    depots.DPLoadFile session, "<Work>\Sessions\office.kre"
    depots.DPGetProfileString session, "Host", "Name", "(not set)", value, 260
    Debug.Print "Host: " & value

    For Each path In depots.Find(session, "<Work>\Sessions", ".kre")
        Debug.Print path
    Next
    If Not depots.Copy(session, "<Work>\Sessions\office.kre", "<Work>\copy.kre", True) Then
        Debug.Print "Failed with " & depots.LastErrorCode(session) & ": " & depots.LastErrorText(session)
    End If
    depots.DPUnInitialize session
End Sub
