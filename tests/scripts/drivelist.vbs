Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim drives: Set drives = CreateObject("Quill.DriveList")

drives.Crop = True
host.Answer "Drive", "ComboBox", "", "keys +{TAB}{DOWN}{ENTER}"
host.CheckEqual drives.Selection("c", "Drive"), "Z:", "by keys"
host.Check host.Answered, "the dialog was answered by keys"
host.Answer "QUILL DriveList", "Button", "OK", "click"
host.CheckEqual UCase(drives.Selection("c:\windows")), "C:", "by a click"
host.Check host.Answered, "the dialog was answered by a click"
host.Answer "Named", "Button", "OK", "close"
host.CheckEqual drives.Selection("", "Named"), "", "closed"
host.Check host.Answered, "the dialog was closed"
host.Done
