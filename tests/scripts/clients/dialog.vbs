Option Explicit

' Opens a dialog with the title that the argument says and tells when it has returned.
Dim host: Set host = CreateObject("QuillTest.Host")
Dim list: Set list = CreateObject("Quill.List")
Dim title: title = WScript.Arguments(0)

host.CheckEqual list.Selection("a" & vbCrLf & "b", 1, title), "b", title
host.Signal title
host.Done
