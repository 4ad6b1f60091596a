' Lets the user choose files of a folder from a list with columns, a filter and a time-out, and adds
' up their sizes. A click on a heading sorts; what is typed narrows the list down.
' Run it with:  cscript //nologo pick-files.vbs [folder]
Option Explicit

Dim aux, list, folder, file, lines, paths, path, bytes
Set aux = CreateObject("Quill.Aux")
Set list = CreateObject("Quill.List")
folder = "."
If WScript.Arguments.Count > 0 Then folder = WScript.Arguments(0)

' A line for each file, with a tab between the columns, and in the same order what it stands for.
With CreateObject("Scripting.FileSystemObject")
  For Each file In .GetFolder(folder).Files
    If lines <> "" Then
      lines = lines & vbCrLf
      paths = paths & vbCrLf
    End If
    lines = lines & file.Name & vbTab & file.Size & vbTab & Year(file.DateLastModified)
    paths = paths & file.Path
  Next
  list.Info = "Which files of " & folder & " should be added up?"
  list.Columns = Array("Name", "Bytes", "Changed in")
  list.Keys = aux.Split(paths, vbCrLf)
  list.Filter = True
  list.MultiSel = True
  list.CancelText = "Cancel"
  list.Timeout = 60
  list.ShowCountdown = True
  If list.SelectionA(aux.Split(lines, vbCrLf), , "Choose files") > 0 Then
    For Each path In list.SelectedKeys
      bytes = bytes + .GetFile(path).Size
      WScript.Echo "  " & path
    Next
    WScript.Echo "Files: " & UBound(list.SelectedKeys) + 1 & ", bytes: " & bytes
  ElseIf list.Outcome = 6 Then
    WScript.Echo "There are no files in " & folder
  ElseIf list.Outcome = 4 Then
    WScript.Echo "Nobody answered within a minute."
  Else
    WScript.Echo "Nothing was chosen."
  End If
End With
