' Plans a backup: which folders, to which drive, when. Writes a batch file that copies them, and
' prints the command that has Windows run it at that time.
' Run it with:  cscript //nologo backup.vbs [folder]
Option Explicit

Dim files, root, folder, names, i, list, mask, drives, drive, picker, start, batch, file

Set files = CreateObject("Scripting.FileSystemObject")
If WScript.Arguments.Count > 0 Then
  root = files.GetAbsolutePathName(WScript.Arguments(0))
Else
  root = CreateObject("WScript.Shell").ExpandEnvironmentStrings("%USERPROFILE%")
End If

' 1. Which folders: a list with check boxes takes up to 30 lines. Bit i of the answer is line i.
names = ""
i = 0
For Each folder In files.GetFolder(root).SubFolders
  If i < 30 Then
    If i > 0 Then names = names & vbCrLf
    names = names & folder.Name
    i = i + 1
  End If
Next
Set list = CreateObject("Quill.CheckList")
list.Info = "Which folders of " & root & " should be backed up?"
list.DlgCancelEsc = True
mask = list.Selection(names, 0, "Backup: folders")
If mask = 0 Then Leave "Nothing to back up."

' 2. To which drive: its letter is all that is needed.
Set drives = CreateObject("Quill.DriveList")
drives.Info = "Where should the copies go?"
drives.Crop = True
drive = drives.Selection("", "Backup: drive")
If drive = "" Then Leave "No drive was chosen."

' 3. When: starts with tonight at eight.
Set picker = CreateObject("Quill.DTPick")
picker.Title = "Backup: time"
picker.Info = "When should it run?"
start = CDate(Date + TimeSerial(20, 0, 0))
If Not picker.Selection(start) Then Leave "No time was chosen."

batch = files.BuildPath(root, "backup.cmd")
Set file = files.CreateTextFile(batch, True)
file.WriteLine "@echo off"
names = Split(names, vbCrLf)
For i = 0 To UBound(names)
  If mask And 2 ^ i Then
    file.WriteLine "robocopy """ & files.BuildPath(root, names(i)) & """ """ & drive & _
                   "\Backup\" & names(i) & """ /e"
    WScript.Echo "Backed up to " & drive & ": " & names(i)
  End If
Next
file.Close
WScript.Echo "schtasks /create /tn Backup /sc once /st " & TwoDigits(Hour(start)) & ":" & _
             TwoDigits(Minute(start)) & " /tr " & batch

Function TwoDigits(number)
  TwoDigits = Right("0" & number, 2)
End Function

Sub Leave(reason)
  WScript.Echo reason
  WScript.Quit 1
End Sub
