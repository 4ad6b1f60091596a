Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim picker: Set picker = CreateObject("Quill.DTPick")
Dim moment: moment = #2024-02-29 20:15:07#

host.Answer "Date/Time Picker", "Button", "OK", "click"
host.Check picker.Selection(moment), "OK"
host.Check host.Answered, "the dialog was answered"
host.CheckEqual moment, #2024-02-29 20:15:07#, "date and time"
picker.Title = "Day"
picker.ControlMode = 0
host.Answer "Day", "SysDateTimePick32", "", "keys {ENTER}"
host.Check picker.Selection(moment), "Enter"
host.Check host.Answered, "the dialog was answered by Enter"
host.CheckEqual moment, #2024-02-29#, "the date alone"
host.Answer "Day", "SysDateTimePick32", "", "keys {ESC}"
moment = "untouched"
host.Check Not picker.Selection(moment), "Esc"
host.Check host.Answered, "the dialog was cancelled"
host.CheckEqual moment, "untouched", "the variable stays"
host.Done
