' Handles and texts in variables of every kind that a script has.
Option Explicit
Dim api, session, value, path, number
Set api = CreateObject("DepotIntr.DepotIntrApi.1")

' A variable that was never set becomes the handle.
api.DPLoadFile session, "<Work>\Sessions\office.kre"
WScript.Echo TypeName(session) & " " & (session > 0)

' The handle stays the same when another file is loaded.
Dim before
before = session
path = "<Work>\Sessions\other.kre"
api.DPLoadFile session, path
WScript.Echo path & " " & (before = session)

' An expression, a literal and a variable stand for each text.
Dim key
key = "Key"
api.DPSetProfileString session, "Section", key, "one"
api.DPSetProfileString session, "Sec" & "tion", "Number", 42
api.DPGetProfileString session, "Section", key, "", value, 100
WScript.Echo TypeName(value) & " " & value
number = api.DPGetProfileInt(session, "Section", "Number", 7)
WScript.Echo TypeName(number) & " " & (number = 42)

' The variable may have held anything before.
value = 17
api.DPGetProfileString session, "Section", "Absent", "default", value, 100
WScript.Echo value
value = Empty
api.DPGetProfileString session, "Section", key, "", value, 3
WScript.Echo value

' An empty text removes the key.
api.DPSetProfileString session, "Section", key, ""
api.DPGetProfileString session, "Section", key, "gone", value, 100
WScript.Echo value
api.DPUnInitialize session

' A handle may be set to zero to get another session.
session = 0
api.DPLoadFile session, path
WScript.Echo "session " & (session <> 0)
api.DPUnInitialize session
WScript.Echo "end"
