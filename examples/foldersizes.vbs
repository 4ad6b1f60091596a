' Tells how much room the folders below a folder take, with the system's own progress dialog,
' Quill.ProgressDialog, which can be cancelled. The lines go to a Quill.Window.
' Run it with:  cscript //nologo foldersizes.vbs [folder]
Option Explicit

Const AutoTime = 2 ' the dialog tells the time that is left

Dim files, helper, dialog, output, path, folder, below, total, index, size

Set files = CreateObject("Scripting.FileSystemObject")
Set helper = CreateObject("Quill.Aux")
If WScript.Arguments.Count > 0 Then
  path = WScript.Arguments(0)
Else
  path = CreateObject("Quill.FileSelection").SelectFolder("The sizes of which folder?")
  If path = "" Then WScript.Quit
End If
Set folder = files.GetFolder(path)

Set output = CreateObject("Quill.Window")
output.WriteSize = 9
output.Create "Folders in " & folder.Path

Set dialog = CreateObject("Quill.ProgressDialog")
dialog.Title = "Sizes of folders"
dialog.CancelMsg = "One moment, please ..."
dialog.StartDlg AutoTime
dialog.SetText "Adding up files"
For Each below In folder.SubFolders
  If dialog.Cancellation Then Exit For
  dialog.SetText below.Path, 2, True ' a long path is shown without its middle
  size = SizeOf(below)
  total = total + size
  output.WriteLine below.Name & ": " & helper.FormatByteSize(size)
  WScript.Echo below.Name & ": " & size
  index = index + 1
  dialog.SetProgress index, folder.SubFolders.Count
Next
dialog.StopDlg
WScript.Echo "Folders: " & index & ", bytes: " & total

Dim message
Set message = CreateObject("Quill.MessageBox")
message.Show "Folders: " & index & ", together " & helper.FormatByteSize(total), 64, "Sizes of folders"

' The bytes in a folder and below; folders that cannot be read count for nothing.
Function SizeOf(place)
  Dim file, deeper, sum
  On Error Resume Next
  For Each file In place.Files
    sum = sum + file.Size
  Next
  For Each deeper In place.SubFolders
    sum = sum + SizeOf(deeper)
  Next
  SizeOf = sum
End Function
