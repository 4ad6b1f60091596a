Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim window: Set window = CreateObject("Quill.Window2")
Dim line

window.Scroll = True
window.Create "Output"
For line = 1 To 500
    window.WriteLine "Line " & line
Next
host.CheckEqual window.Title, "Output", "Title"
host.Answer "Output", "Edit", "", "keys {ESC}^a^c"
host.Check host.Answered, "the text can be selected and copied"
window.Cls
window.WriteLine "last"
host.Answer "Output", "Edit", "last" & vbCrLf, "wait"
host.Check host.Answered, "Cls and a new line"
host.Check window.handle <> 0, "Esc closes nothing"
window.Remove
host.CheckEqual window.handle, 0, "removed"
host.Done
