' Lists the files of a folder with their sizes and SHA-256 checksums, with Quill.Aux.
' Run it with:  cscript //nologo checksums.vbs [folder [pattern]]
Option Explicit

Dim aux, files, folder, pattern, file, names, name

Set aux = CreateObject("Quill.Aux")
Set files = CreateObject("Scripting.FileSystemObject")
folder = files.GetAbsolutePathName(".")
pattern = "*"
If WScript.Arguments.Count > 0 Then folder = files.GetAbsolutePathName(WScript.Arguments(0))
If WScript.Arguments.Count > 1 Then pattern = WScript.Arguments(1)

' A character that no file name has separates the names.
names = ""
For Each file In files.GetFolder(folder).Files
  If aux.MatchName(file.Name, pattern) Then
    If names <> "" Then names = names & "|"
    names = names & file.Name
  End If
Next

' Sorted as the user's language sorts, which the folder's own order is not.
For Each name In aux.Sort(aux.Split(names, "|"))
  Set file = files.GetFile(aux.CombinePath(folder, name))
  WScript.Echo aux.HashFile(file.Path) & "  " & name & "  (" & aux.FormatByteSize(file.Size) & ")"
Next
