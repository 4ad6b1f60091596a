Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim window: Set window = CreateObject("Quill.ProgressWindow")

host.Listen window
window.MainText = "Working"
window.SubText = "with a will"
window.Button = 1
window.ButtonLabel = "Stops it"
window.BtnNotifier = 2
window.TBProgress = 2
host.CheckEqual window.SetProgressRange(0, 200), True, "SetProgressRange"
window.Progress = 50
window.Create "Work", 400
window.ProgressAdd 25
window.ProgressStep
host.CheckEqual window.Progress, 85, "the bar has moved"
host.CheckEqual window.TBProValue & "/" & window.TBProTotal, "85/200", "the taskbar follows"

' The button, by mouse and by keyboard; each arming gives one event.
host.Answer "Work", "Button", "Stop", "click"
host.Check host.Pump(5000), "an event came"
host.CheckEqual window.BtnPressed, 1, "BtnPressed"
host.CheckEqual window.BtnNotifier, 0, "not armed any more"
window.BtnNotifier = 2
host.Answer "Work", "Button", "Stop", "keys {SPACE}"
host.Check host.Pump(5000), "the space bar presses it, too"
host.CheckEqual host.Heard("ButtonPressed"), 2, "two events"

' The close box presses the button, or closes the window.
window.BtnNotifier = 2
host.Answer "Work", "Button", "Stop", "close"
host.Check host.Pump(5000), "it presses the button"
window.Button = 0
window.BtnNotifier = 2
host.Answer "Work", "msctls_progress32", "", "close"
host.Check host.Answered, "it closes the window"
host.CheckEqual window.BtnPressed, 3, "which is no press"
window.Progress = 10
window.Create
window.Remove
host.CheckEqual window.Progress, 10, "the position is kept"
host.Done
