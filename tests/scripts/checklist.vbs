Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim list: Set list = CreateObject("Quill.CheckList")
Dim things, states: things = Array("map", "tent", "rope")

host.Answer "Pack", "SysListView32", "", "keys {SPACE}{DOWN}{SPACE}{ENTER}"
host.CheckEqual list.Selection("map" & vbCrLf & "tent" & vbCrLf & "rope", 5, "Pack"), 6, "by keys"
host.Check host.Answered, "the dialog was answered by keys"

states = Array(True, False, 1)
host.Answer "Pack", "Button", "OK", "click"
host.CheckEqual list.SelectionA(things, states, "Pack"), 5, "by a click"
host.Check host.Answered, "the dialog was answered by a click"
host.CheckEqual UBound(states), 2, "the script's arrays stay"

list.DlgCancelEsc = True
host.Answer "QUILL CheckList", "SysListView32", "", "keys {ESC}"
host.CheckEqual list.SelectionA(Array("map")), 0, "cancelled"
host.Check host.Answered, "the dialog was cancelled"
host.Done
