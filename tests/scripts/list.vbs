Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim list: Set list = CreateObject("Quill.List")

' Keyboard alone.
host.Answer "Fruit", "ListBox", "", "keys {DOWN}{ENTER}"
host.CheckEqual list.Selection("apple" & vbCrLf & "pear" & vbCrLf & "plum", 1, "Fruit"), "plum", "by keys"
host.Check host.Answered, "the dialog was answered by keys"

' The mouse.
list.ButtonText = "Take it"
host.Answer "Fruit", "Button", "Take it", "click"
host.CheckEqual list.Selection("apple" & vbCrLf & "pear", 1, "Fruit"), "pear", "by a click"
host.Check host.Answered, "the dialog was answered by a click"

host.Answer "Fruit", "ListBox", "", "close"
host.CheckEqual list.Selection("apple", 0, "Fruit"), "", "closed"
host.Check host.Answered, "the dialog was closed"

host.Done
