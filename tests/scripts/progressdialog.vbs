Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim dialog: Set dialog = CreateObject("Quill.ProgressDialog")

host.CheckEqual dialog.Cancellation, False, "not started"
dialog.Title = "Scripted work"
dialog.CancelMsg = "One moment"
dialog.StartDlg 2
dialog.SetText "A line"
dialog.SetText "Another", 2, False
dialog.SetProgress 30, 100
dialog.SetProgress64 CCur(40), CCur(100)
dialog.SetTimer
host.Answer "Scripted work", "Static", "Another", "wait"
host.Answer "Scripted work", "Button", "Cancel", "click"
host.Check host.Answered, "the dialog was there"
Dim turn
For turn = 1 To 1000
    If dialog.Cancellation Then Exit For
Next
host.CheckEqual dialog.Cancellation, True, "cancelled by the user"
dialog.StopDlg
host.CheckEqual dialog.Cancellation, False, "stopped"
host.Done
