' Asks before it deletes, with Quill.MessageBox: an icon of the system's own, and "No" as the button
' that Enter presses.
' Run it with:  cscript //nologo confirm.vbs [file]
Option Explicit

Const ButtonsYesNo = 4, AnswerYes = 6

Dim files, path, box

Set files = CreateObject("Scripting.FileSystemObject")
If WScript.Arguments.Count > 0 Then
  path = WScript.Arguments(0)
Else
  path = CreateObject("WScript.Shell").ExpandEnvironmentStrings("%TEMP%\quill-old-backup.txt")
  files.CreateTextFile(path, True).Close
End If
If Not files.FileExists(path) Then
  WScript.Echo "There is no file " & path
  WScript.Quit 1
End If

' The properties describe the box once; Show can be called as often as there is something to ask.
Set box = CreateObject("Quill.MessageBox")
box.Title = "Delete a file"
box.Buttons = ButtonsYesNo
box.DefButton = 2                ' the second one, "No": Enter alone destroys nothing
box.IconResFile = "shell32.dll"  ' the full recycle bin, from the system's library
box.IconResID = "#33"

If box.Show("Delete this file? It cannot be brought back." & vbCrLf & vbCrLf & path) = AnswerYes Then
  files.DeleteFile path
  WScript.Echo "Deleted: " & path
Else
  WScript.Echo "Kept: " & path
End If
