' A first client: reads and writes a session profile without knowing where it is kept.
Option Explicit
Const PROFILE = "<Work>\Sessions\office.kre"

Dim depots, session, value
Set depots = CreateObject("DepotIntr.DepotIntrApi")
session = depots.DPInitialize()

WScript.Echo "Default depot:  " & depots.DPGetDefaultDPPath(session)
WScript.Echo "Kept in:        " & depots.DPPathConvertDPtoFS(PROFILE)
depots.DPLoadFile session, PROFILE

Show "PROFILE", "Title"
Show "Host", "Name"
Show "Screen", "Font"
Show "Keyboard", "Layout"
WScript.Echo "[Host] Port:    " & depots.DPGetProfileInt(session, "Host", "Port", 23)

' What is written comes back exactly, leading blanks and quotes included.
depots.DPSetProfileString session, "Notes", "Indented", "   three blanks before"
depots.DPSetProfileString session, "Notes", "Quoted", """in double quotes"""
Show "Notes", "Indented"
Show "Notes", "Quoted"

' A depot whose path follows the user and whose name follows the user's language.
WScript.Echo "Shared depot:   " & depots.DPGetDepotDisplayPath(session, "<Shared>\any.kre")
WScript.Echo "Its folder:     " & depots.DPPathConvertDPtoFS("<Shared>\any.kre")

depots.DPUnInitialize session
WScript.Echo "Session ended."

Sub Show(section, key)
    depots.DPGetProfileString session, section, key, "(not set)", value, 260
    WScript.Echo "[" & section & "] " & key & ": {" & value & "}"
End Sub
