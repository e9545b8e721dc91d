' Lets a person choose session profiles among the sample depots, and shows which.
Option Explicit
Dim dialog, path

Set dialog = CreateObject("DepotBrowser.DepotBrowseDialog")
dialog.Mode = 22
dialog.AllowMultipleSelection = 1
If dialog.ShowModal() = 1 Then
    For Each path In dialog.ChosenFiles
        WScript.Echo path
    Next
Else
    WScript.Echo "Nothing was chosen."
End If
