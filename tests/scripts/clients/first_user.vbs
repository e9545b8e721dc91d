' The whole way of a first user: open a session, read five values, write two, end the session.
Option Explicit
Const PROFILE = "<Work>\Sessions\office.kre"

Dim api, session, value
Set api = CreateObject("DepotIntr.DepotIntrApi")
session = api.DPInitialize()
WScript.Echo "default " & api.DPGetDefaultDPPath(session)
api.DPLoadFile session, PROFILE

Show "PROFILE", "Title"
Show "Host", "Name"
Show "Screen", "Font"
Show "Screen", "Absent"
WScript.Echo "Host.Port " & (api.DPGetProfileInt(session, "Host", "Port", 0) + 1)

api.DPSetProfileString session, "Notes", "Indented", "   three blanks before"
api.DPSetProfileString session, "Notes", "Quoted", """in double quotes"""
Show "Notes", "Indented"
Show "Notes", "Quoted"

api.DPFlushFile session
api.DPUnInitialize session
WScript.Echo "end"

Sub Show(section, key)
    api.DPGetProfileString session, section, key, "(not set)", value, 260
    WScript.Echo section & "." & key & " {" & value & "}"
End Sub
