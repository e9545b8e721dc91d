' One client, two kinds of depot: the same calls edit a file in a folder and a file in a directory.
Option Explicit

Dim depots, session
Set depots = CreateObject("DepotIntr.DepotIntrApi")
session = depots.DPInitialize()

Edit "<Work>\Sessions\office.kre"
Edit "<Company>\Sessions\reception.kre"

' The last file is stored when it is let go of, here with the session.
depots.DPUnInitialize session
WScript.Echo "Session ended."

' Loading the next file stores the one before it.
Sub Edit(profile)
    WScript.Echo profile
    WScript.Echo "  shown as:      " & depots.DPGetDepotDisplayPath(session, profile)
    depots.DPLoadFile session, profile
    WScript.Echo "  [Host] Name:   " & Value("Host", "Name")
    WScript.Echo "  [Screen] Rows: " & Value("Screen", "Rows")
    depots.DPSetProfileString session, "Screen", "Rows", "43"
    depots.DPSetProfileString session, "Notes", "Edited by", "directory.vbs"
    WScript.Echo "  changed to:    " & Value("Screen", "Rows")
End Sub

Function Value(section, key)
    Dim text
    depots.DPGetProfileString session, section, key, "(not set)", text, 260
    Value = text
End Function
