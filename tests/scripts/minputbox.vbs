Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim box: Set box = CreateObject("Quill.MInputBox")
Dim texts, fixed(1)

host.Answer "Name", "Edit", "", "keys new{ENTER}"
host.CheckEqual box.InputS("Your name?", "Name", "old"), "new", "one text"
host.Check host.Answered, "the dialog was answered"

box.Title = "Person"
box.InputNumber = 2
box.AccPrefix = True
box.InpLabel = Array("&Name", "&Age")
box.InpTextStyle = Array(1, 3)
box.DlgCancelTime = 30
host.Answer "Person", "Edit", "", "keys %ax4y2%nann{ENTER}"
host.Check box.InputM(texts), "several texts"
host.Check host.Answered, "the dialog was answered by access keys"
host.CheckEqual UBound(texts), 1, "the array"
host.CheckEqual texts(0) & texts(1), "ANN42", "upper case, digits"

host.Answer "Person", "Edit", "", "keys {ESC}"
host.Check Not box.InputM(texts), "Esc"
host.Check host.Answered, "the dialog was cancelled"
host.CheckEqual UBound(texts), 1, "an array of empty texts"
host.Check Not box.InputM(fixed), "a fixed array is refused"

box.DlgCancelTime = 33
On Error Resume Next
box.InputM texts
host.CheckEqual Err.Number, 6, "overflow"
host.Done
