Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim window: Set window = CreateObject("Quill.Window")

window.WriteLine "nowhere"
host.CheckEqual window.handle, 0, "no window yet"
window.Title = "Report"
window.WriteSize = 40
window.WriteFont = "Tahoma"
window.WriteBold = True
window.Topmost = False
window.Create
host.CheckEqual window.WriteSize, 36, "the largest size"
host.Check window.handle <> 0, "a window"
window.WriteLine "first"
window.WriteLine String(5000, "x")
window.Flash
window.Cls
window.WriteLine "last"
host.Answer "Report", "Static", "last" & vbCrLf, "close"
host.Check host.Answered, "the window shows its text"
Dim turn
For turn = 1 To 1000
    If window.handle = 0 Then Exit For
Next
host.CheckEqual window.handle, 0, "closed by its close box"
window.WriteLine "nowhere"
window.Create "Another"
host.CheckEqual window.Title, "Another", "the title of Create"
host.Answer "Another", "Static", "", "wait"
host.Check host.Answered, "it came again"
window.Remove
host.CheckEqual window.handle, 0, "removed"
host.Done
