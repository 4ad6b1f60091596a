' Counts down before something begins, so that there is time to stop it with Ctrl+C. Quill.Clock
' measures the seconds; Wait works in hosts that have no Sleep and receive no events, too.
' Run it with:  cscript //nologo countdown.vbs [seconds]
Option Explicit

Dim clock, seconds, left

seconds = 3
If WScript.Arguments.Count > 0 Then seconds = CLng(WScript.Arguments(0))

Set clock = CreateObject("Quill.Clock")
WScript.Echo "The backup begins soon. Press Ctrl+C to stop it."
For left = seconds To 1 Step -1
  WScript.Echo left & " ..."
  clock.SetTimer 1000
  clock.Wait ' until the second is over
Next

' A timer is a time limit, too: it runs while the script works, and Running tells whether there is
' time left.
Dim steps
clock.SetTimer 10000
Do While clock.Running And steps < 10
  steps = steps + 1 ' here a file would be copied
Loop
If clock.Running Then
  clock.RemoveTimer
  WScript.Echo "All " & steps & " files were copied."
Else
  WScript.Echo "The time was over after " & steps & " files."
End If
WScript.Echo "The countdown is complete."
