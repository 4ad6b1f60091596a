' Adds up the sizes of several files that the user chooses, with Quill.FileSelection.
' Run it with:  cscript //nologo open-files.vbs [folder]
Option Explicit

Const OpenSeveral = 2, Cancelled = -1

Dim selection, files, count, name, size, total

Set selection = CreateObject("Quill.FileSelection")
If WScript.Arguments.Count > 0 Then selection.Directory = WScript.Arguments(0)
selection.DlgTitle = "Choose the files to add up"
selection.FileNumber = 64 ' room for about as many
selection.Convert = True  ' the names come back as lines
selection.SetFilter Array("Texts (*.txt, *.log)", "*.txt;*.log", "All files", "*.*")

count = selection.Dialog(OpenSeveral)
If count = 0 Then
  If selection.ErrorCode = Cancelled Then
    WScript.Echo "No files were chosen."
  Else
    WScript.Echo "The dialog failed: error 0x" & Hex(selection.ErrorCode)
  End If
  WScript.Quit 1
End If

' Directory ends in a backslash. Each of several names ends in a line break, one alone does not.
WScript.Echo "From " & selection.Directory
Set files = CreateObject("Scripting.FileSystemObject")
For Each name In Split(selection.FileName, vbCrLf)
  If name <> "" Then
    size = files.GetFile(selection.Directory & name).Size
    total = total + size
    WScript.Echo "  " & name & ": " & size
  End If
Next
WScript.Echo "Files: " & count & ", bytes: " & total
