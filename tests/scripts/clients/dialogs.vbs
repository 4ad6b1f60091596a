Option Explicit

' Two of these run at once; the argument says which one this is. The first opens its dialog first
' and is answered first: its call must return while the other's still waits.
Dim host: Set host = CreateObject("QuillTest.Host")
Dim list: Set list = CreateObject("Quill.List")

Select Case WScript.Arguments(0)
Case "first"
    host.Answer "second", "ListBox", "", "move 0 0"
    host.Answer "first", "Button", "OK", "click"
    host.CheckEqual list.Selection("a" & vbCrLf & "b", 1, "first"), "b", "first"
    host.Answer "second", "Button", "OK", "click"
    host.Check host.Answered, "the first dialog, then the second"
Case "second"
    host.Answer "first", "ListBox", "", "wait"
    host.Check host.Answered, "the first dialog is open"
    host.CheckEqual list.Selection("c" & vbCrLf & "d", 0, "second"), "c", "second"
End Select
host.Done
