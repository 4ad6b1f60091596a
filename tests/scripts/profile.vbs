Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim profile: Set profile = CreateObject("Quill.Profile")
Dim path: path = host.Folder & "script.ini"

Sub CheckLastError(number, description)
    host.CheckError Err.Number, Err.Source, Err.Description, number, "Quill.Profile", description
    Err.Clear
End Sub

' Errors, as On Error code sees them.
On Error Resume Next
profile.GetValue "section", "key"
CheckLastError &H80040340, "No Profile defined."
profile.File = path
CheckLastError &H8004033F, "Profile not found: " & path
profile.ErrorLevel = 0
profile.File = path
host.CheckEqual Err.Number, 0, "quiet with ErrorLevel 0"
host.CheckEqual profile.GetValue("section", "key"), "", "GetValue without a File"
On Error GoTo 0
profile.ErrorLevel = 1

' The whole way, on a file that the script made itself.
CreateObject("Scripting.FileSystemObject").CreateTextFile(path).Close
profile.File = path
host.CheckEqual profile.File, path, "File"
host.CheckEqual profile.SetValue("section", "key", "value"), True, "SetValue"
host.CheckEqual profile.SetValue("section", "other", 42), True, "SetValue of a number"
host.CheckEqual profile.GetValue("section", "key"), "value", "GetValue"
host.CheckEqual profile.GetSection("section"), "key=value" & vbCrLf & "other=42" & vbCrLf, "GetSection"
host.CheckEqual profile.GetSection("section", False), "key=value" & Chr(0) & "other=42" & Chr(0), "GetSection, cvt False"
host.CheckEqual profile.SetSection("second", "a=1" & vbCrLf & "b=2"), True, "SetSection"
host.CheckEqual profile.GetSectionNames, "section" & vbCrLf & "second" & vbCrLf, "GetSectionNames"

' A variable is passed by reference.
Dim section, key: section = "second": key = "b"
host.CheckEqual profile.GetValue(section, key), "2", "arguments in variables"

On Error Resume Next
profile.SetValue "section", "key", String(8193, "x")
CheckLastError &H80040341, "Key value length is beyond maximum (0x2000)."
profile.SetSection "section", String(32769, "x")
CheckLastError &H80040341, "Section entries beyond maximum (0x8000)."

host.Done
