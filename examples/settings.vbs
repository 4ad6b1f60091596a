' Keeps a script's settings between its runs, with Quill.Profile.
' Run it with:  cscript //nologo settings.vbs [file.ini]
Option Explicit

Dim profile, path, name, count

If WScript.Arguments.Count > 0 Then
  path = WScript.Arguments(0)
Else
  path = CreateObject("WScript.Shell").ExpandEnvironmentStrings("%TEMP%\quill-settings.ini")
End If
Set profile = OpenSettings(path)

' What is not in the file yet has a default.
name = Setting("User", "Name", "nobody yet")
count = CLng(Setting("Runs", "Count", "0"))
WScript.Echo "Last user: " & name & ", runs so far: " & count

' Settings are written at once; there is nothing to save at the end.
profile.SetValue "User", "Name", CreateObject("WScript.Network").UserName
profile.SetValue "Runs", "Count", CStr(count + 1)
profile.SetValue "Runs", "Last", CStr(Now)

' A whole section at a time.
profile.SetSection "Window", "Left=100" & vbCrLf & "Top=80" & vbCrLf & "Obsolete=yes"

' An empty entry deletes a key.
profile.SetValue "Window", "Obsolete", ""

' Everything that is in the file. Each name ends in a line break, so the last part is empty.
Dim section
For Each section In Split(profile.GetSectionNames, vbCrLf)
  If section <> "" Then
    WScript.Echo "[" & section & "]"
    WScript.Echo profile.GetSection(section)
  End If
Next
WScript.Echo "Settings are in " & path

' The profile of this path; the file is made when it is not there yet.
Function OpenSettings(path)
  Dim files
  Set files = CreateObject("Scripting.FileSystemObject")
  If Not files.FileExists(path) Then files.CreateTextFile(path, True, True).Close
  Set OpenSettings = CreateObject("Quill.Profile")
  OpenSettings.File = path
End Function

' The value of a key, or the default where there is none.
Function Setting(section, key, default)
  Setting = profile.GetValue(section, key)
  If Setting = "" Then Setting = default
End Function
