' Runs a command and records how it went, with Quill.EventLog and Quill.Aux.
' Run it with:  cscript //nologo joblog.vbs command [argument ...]
Option Explicit

Dim log, aux, shell, command, index, code

If WScript.Arguments.Count = 0 Then
  WScript.Echo "Usage: joblog.vbs command [argument ...]"
  WScript.Quit 1
End If

' The file lies in the folder Quill of the user's local application data. With mode 0 instead of 2,
' events go to the system's event log, and to the file only where that is refused.
Set log = CreateObject("Quill.EventLog")
log.mode = 2
log.File = "jobs.log"

command = ""
For index = 0 To WScript.Arguments.Count - 1
  command = command & """" & WScript.Arguments(index) & """ "
Next

Set aux = CreateObject("Quill.Aux")
Set shell = CreateObject("WScript.Shell")
log.Report "Started: " & command, vbInformation
On Error Resume Next
code = shell.Run(command, 1, True)
If Err.Number <> 0 Then
  log.Report "Could not be started: " & command & vbCrLf & Err.Description, vbCritical
  code = 1
ElseIf code <> 0 Then
  log.Report "Ended with code " & code & ": " & command, vbExclamation
Else
  log.Report "Ended well: " & command, vbInformation
End If
WScript.Echo "Recorded in " & aux.ExpandEnvironment("%LOCALAPPDATA%\Quill\jobs.log")
WScript.Quit code
