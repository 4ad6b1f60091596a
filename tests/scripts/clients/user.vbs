Option Explicit

' Answers the dialogs of two other scripts in the order of its arguments. Each must return when its
' own answer came, and while both are open the server answers other calls.
Dim host: Set host = CreateObject("QuillTest.Host")
Dim profile: Set profile = CreateObject("Quill.Profile")
Dim first: first = WScript.Arguments(0)
Dim second: second = WScript.Arguments(1)

host.Answer first, "ListBox", "", "move 0 0"
host.Answer second, "ListBox", "", "move 400 0"
host.Check host.Answered, "both dialogs are open"
profile.ErrorLevel = 0
host.CheckEqual profile.GetValue("section", "key"), "", "Profile answers meanwhile"

host.Answer first, "Button", "OK", "click"
host.Check host.Await(first, 10000), "the one answered first returned while the other waits"
host.Answer second, "Button", "OK", "click"
host.Check host.Await(second, 10000), "the other one returned"
host.Done
