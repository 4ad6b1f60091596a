Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim files: Set files = CreateObject("Scripting.FileSystemObject")
Dim selection: Set selection = CreateObject("Quill.FileSelection")
Dim folder: folder = host.Folder
Dim name

For Each name In Array("a.txt", "b.txt")
    files.CreateTextFile(folder & name).Close
Next
selection.Directory = folder
selection.DlgTitle = "Files"
selection.Convert = True
selection.SetFilter Array("Texts", "*.txt", "All files", "*.*")
host.CheckEqual selection.Filter, Replace("Texts|*.txt|All files|*.*||", "|", Chr(0)), "Filter"

' Open one; the name is typed.
host.Answer "Files", "Edit", "", "keys a.txt{ENTER}"
CheckDialog 0, 1, "a.txt", "open"

' Save; the extension is added, and the name of the last time is there at first.
selection.FileExtension = "log"
selection.SetFilter "All files" & vbCrLf & "*.*"
host.Answer "Files", "Edit", "a.txt", "keys ^anew{ENTER}"
CheckDialog 1, 1, "new.log", "save"

' Several.
selection.FileName = ""
host.Answer "Files", "Edit", "", "keys ""a.txt"" ""b.txt""{ENTER}"
CheckDialog 2, 2, "a.txt" & vbCrLf & "b.txt" & vbCrLf, "open several"
selection.FileName = ""
host.Answer "Files", "Edit", "", "keys b.txt{ENTER}"
CheckDialog 2, 1, "b.txt", "open several, one chosen"

' Cancelled: nothing changes but ErrorCode.
host.Answer "Files", "Button", "Cancel", "click"
host.CheckEqual selection.Dialog(0), 0, "cancelled"
host.Check host.Answered, "Cancel"
host.CheckEqual selection.ErrorCode, -1, "ErrorCode"
host.CheckEqual selection.FileName, "b.txt", "FileName stays"

' Errors.
On Error Resume Next
selection.Dialog 3
CheckLastError &H80040353, "Mode parameter: Invalid argument."
selection.ErrorLevel = 0
host.CheckEqual selection.Dialog(3), 0, "quiet with ErrorLevel 0"
host.CheckEqual Err.Number, 0, "no error with ErrorLevel 0"
selection.FileName = String(261, "x")
selection.Dialog 0
CheckLastError 5, "Invalid procedure call or argument"
host.Done

Sub CheckDialog(mode, count, chosen, message)
    host.CheckEqual selection.Dialog(mode), count, message
    host.Check host.Answered, message
    host.CheckEqual selection.Directory, folder, "Directory: " & message
    host.CheckEqual selection.FileName, chosen, "FileName: " & message
    host.CheckEqual selection.ErrorCode, 0, "ErrorCode: " & message
End Sub

Sub CheckLastError(number, description)
    host.CheckError Err.Number, Err.Source, Err.Description, number, "Quill.FileSelection", description
    Err.Clear
End Sub
