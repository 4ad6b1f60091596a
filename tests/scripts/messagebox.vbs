Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim box: Set box = CreateObject("Quill.MessageBox")

' The box as the properties describe it.
box.Title = "Question"
box.Text = "Shall it be?"
box.Buttons = 3
box.DefButton = 2
box.Icon = 32
host.Answer "Question", "Static", "Shall it be?", "keys {ENTER}"
host.CheckEqual box.Show, 7, "Enter presses the default button, No"
host.Check host.Answered, "Enter"
host.Answer "Question", "Button", "Yes", "click"
host.CheckEqual box.Show, 6, "Yes"
host.Check host.Answered, "a click"
host.Answer "Question", "Button", "Cancel", "close"
host.CheckEqual box.Show, 2, "the close box cancels"
host.Check host.Answered, "the close box"

' Arguments come before the properties, and an explicit style comes in place of them.
host.Answer "Other", "Static", "Again?", "wait"
host.Answer "Other", "Button", "Retry", "click"
host.CheckEqual box.Show("Again?", 5, "Other"), 4, "Retry, from an explicit style"
host.Check host.Answered, "the other box"

' An icon of a module, and what cannot be one.
box.IconResFile = "shell32.dll"
box.IconResID = "#16"
host.Answer "Question", "Button", "Yes", "click"
host.CheckEqual box.Show, 6, "with an icon"
host.Check host.Answered, "with an icon"
box.IconResID = "#x"
On Error Resume Next
box.Show
host.CheckError Err.Number, Err.Source, Err.Description, 13, "Quill.MessageBox", "Type mismatch"
host.Done
