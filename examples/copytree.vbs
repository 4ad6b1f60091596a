' Copies a folder with everything in it, and shows how far it is, with Quill.ProgressWindow: the file,
' the time that is left, a button to stop, progress on the taskbar. What could not be copied is listed
' in a Quill.Window2, from which it can be copied out.
' Run it with:  cscript //nologo copytree.vbs SOURCE TARGET
Option Explicit

Dim files, window, failures, names, bytes, done, count, failed, started, source, target, stopped

If WScript.Arguments.Count < 2 Then
  WScript.Echo "copytree.vbs SOURCE TARGET"
  WScript.Quit 2
End If
source = WScript.Arguments(0)
target = WScript.Arguments(1)
Set files = CreateObject("Scripting.FileSystemObject")
Set names = CreateObject("Scripting.Dictionary")
Set window = CreateObject("Quill.ProgressWindow")

window.Title = "Copy " & files.GetFileName(source)
window.MainText = "Looking for files ..."
window.ButtonLabel = "Stops after the current file."
window.Button = 1
window.TBProgress = 2               ' the taskbar shows what the bar shows
window.ProgressStyle = 8            ' as long as nobody knows how much there is
window.Create
Collect files.GetFolder(source), target

window.ProgressStyle = 1
window.SetProgressRange 0, 1000     ' large numbers do not fit into a range: count thousandths
window.MainText = "Copying " & names.Count & " files"
started = Timer
Dim name
For Each name In names.Keys
  If window.WaitButton(0) Then      ' the button, or the close box, was pressed
    stopped = True
    Exit For
  End If
  window.SubText = name & vbCrLf & TimeLeft
  CopyOne name, names(name)
  If bytes > 0 Then window.Progress = Int(1000 * done / bytes)
Next
window.Remove

WScript.Echo "Copied: " & count & " of " & names.Count & " files, " & done & " bytes"
If stopped Then WScript.Echo "It was stopped."
If failed > 0 Then
  Dim message: Set message = CreateObject("Quill.MessageBox")
  message.Show failed & " files could not be copied; they are listed in the window.", 48, window.Title
  WScript.Quit 1
End If

' All files below a folder, with the folder that each goes to.
Sub Collect(folder, goal)
  Dim file, below
  If Not files.FolderExists(goal) Then files.CreateFolder goal
  For Each file In folder.Files
    names.Add file.Path, goal
    bytes = bytes + file.Size
  Next
  window.SubText = folder.Path
  For Each below In folder.SubFolders
    If window.BtnPressed > 0 Then Exit Sub
    Collect below, files.BuildPath(goal, below.Name)
  Next
End Sub

Sub CopyOne(path, goal)
  On Error Resume Next
  Dim size: size = files.GetFile(path).Size
  files.CopyFile path, files.BuildPath(goal, files.GetFileName(path)), True
  If Err.Number = 0 Then
    count = count + 1
    done = done + size
    Exit Sub
  End If
  If failed = 0 Then
    Set failures = CreateObject("Quill.Window2")
    failures.Create "Not copied"
    window.ProgressState = 3        ' yellow
  End If
  failed = failed + 1
  failures.WriteLine path & ": " & Err.Description
End Sub

Function TimeLeft()
  Dim seconds
  If done = 0 Or Timer - started < 2 Then Exit Function
  seconds = Int((Timer - started) * (bytes - done) / done) + 1
  If seconds < 60 Then TimeLeft = "About " & seconds & " seconds left" Else TimeLeft = "About " & Int(seconds / 60 + 0.5) & " minutes left"
End Function
