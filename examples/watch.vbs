' Sits in the notification area and watches a folder: a balloon tells of each file that appears
' there. The menu of the icon opens the folder, pauses the watch and ends it.
' Run it with:  wscript watch.vbs [folder]
Option Explicit

Dim files, shell, notice, folder, seen, paused, came

Set files = CreateObject("Scripting.FileSystemObject")
Set shell = CreateObject("WScript.Shell")
Set notice = CreateObject("Quill.Notice")

If WScript.Arguments.Count > 0 Then
  folder = WScript.Arguments(0)
Else
  folder = shell.ExpandEnvironmentStrings("%USERPROFILE%\Downloads")
End If
If Not files.FolderExists(folder) Then
  WScript.Echo "There is no folder " & folder
  WScript.Quit 1
End If

notice.IconFile = "shell32.dll"
notice.IconID = 4 ' a folder
notice.BalloonIcon = 5 ' the same in the balloon
notice.AutoRestore = True ' the icon comes back when the taskbar is started anew
SetPause False
Set seen = NamesInFolder
If Not notice.Add Then
  WScript.Echo "The icon could not be shown, error " & notice.ErrorCode
  WScript.Quit 1
End If

Do
  Select Case notice.WaitClick(250)
    Case 11, 100 ' the first item of the menu, the balloon
      shell.Run """" & folder & """"
    Case 12
      SetPause Not paused
    Case 13
      Exit Do
  End Select
  If Not paused Then LookForFiles
Loop
notice.Remove
WScript.Echo "Files that came: " & came

Sub SetPause(value)
  paused = value
  If paused Then
    notice.ContextMenu = Array("&Open folder", "-", "&Resume", "&Quit")
    notice.TipText = "Paused: " & folder
  Else
    notice.ContextMenu = Array("&Open folder", "-", "&Pause", "&Quit")
    notice.TipText = "Watching " & folder
  End If
End Sub

Sub LookForFiles
  Dim now, name, text, count
  Set now = NamesInFolder
  For Each name In now.Keys
    If Not seen.Exists(name) Then
      count = count + 1
      text = name
    End If
  Next
  Set seen = now
  If count = 0 Then Exit Sub
  came = came + count
  If count > 1 Then text = text & " and " & count - 1 & " more"
  notice.BalloonTitle = "New in " & files.GetFileName(folder)
  notice.BalloonText = text
  notice.ShowBalloon
End Sub

Function NamesInFolder
  Dim file
  Set NamesInFolder = CreateObject("Scripting.Dictionary")
  For Each file In files.GetFolder(folder).Files
    NamesInFolder.Add file.Name, True
  Next
End Function
