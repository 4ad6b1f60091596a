Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim log: Set log = CreateObject("Quill.EventLog")
Dim aux: Set aux = CreateObject("Quill.Aux")
Dim path: path = host.Folder & "script.log"

Sub CheckLastError(number, description)
    host.CheckError Err.Number, Err.Source, Err.Description, number, "Quill.EventLog", description
    Err.Clear
End Sub

On Error Resume Next
log.Report ""
CheckLastError &H80040335, "Missing event log string."
log.mode = 5
CheckLastError &H80040336, "Invalid log mode."
log.mode = 1
host.CheckEqual log.mode, 3, "mode as the service has it"
log.Report "to the system's log", 48
host.CheckEqual Err.Number, 0, "the system's log"

log.mode = 2
log.File = host.Folder & "none\script.log"
log.Report "lost"
host.CheckEqual Err.Number, &H80070003, "a file that cannot be made"
Err.Clear
On Error GoTo 0

log.File = path
log.Report "one" & vbCrLf & "event", 16
log.Report "another"
host.Check aux.HashFile(path) <> "", "the file is there"

Dim before: before = aux.HashFile(path)
log.Report "a third"
host.Check aux.HashFile(path) <> before, "and grows"

host.Done
