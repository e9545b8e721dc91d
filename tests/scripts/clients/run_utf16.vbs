' Runs a script that is saved as UTF-16 in an engine of its own.
Option Explicit
Const READING = 1
Const UTF16 = -1
Dim files, engine
Set files = CreateObject("Scripting.FileSystemObject")
Set engine = CreateObject("MSScriptControl.ScriptControl")
engine.Language = "VBScript"
engine.AddObject "WScript", WScript
engine.AddCode files.OpenTextFile(WScript.Arguments(0), READING, False, UTF16).ReadAll
