' A tour of quill: settings are written and read, the user answers questions and chooses from lists,
' and watches the progress of the work.
' Run it with:  cscript //nologo tour.vbs
Option Explicit

Dim path, profile, list, offices, office, drives, box, user, checks, chores, window, clock, step

' 1. Quill.Profile keeps settings in an initialisation file. The file must exist before it is
'    used; made as a Unicode file, it keeps the characters of every language.
path = CreateObject("WScript.Shell").ExpandEnvironmentStrings("%TEMP%\quill-tour.ini")
CreateObject("Scripting.FileSystemObject").CreateTextFile(path, True, True).Close

Set profile = CreateObject("Quill.Profile")
profile.File = path
AddOffice "Hamburg", "hamburg"
AddOffice "Lisbon", "lisbon"
AddOffice "Oslo", "oslo"
AddOffice "Vienna", "vienna"
profile.SetValue "Oslo", "L", "\\oslo\laboratory"
WScript.Echo "Settings file: " & path
WScript.Echo "Drive P in Oslo: " & profile.GetValue("Oslo", "P")

' 2. Quill.MInputBox asks for a text.
Set box = CreateObject("Quill.MInputBox")
user = box.InputS("What is your name?", "Welcome to quill", _
                  CreateObject("Quill.System").UserName)
If user = "" Then
  WScript.Echo "No name given; the tour ends here."
  WScript.Quit 1
End If
WScript.Echo "Hello, " & user & "."

' 3. Quill.List asks for one line. The names of all sections, as Profile returns them, are just
'    what it takes.
offices = profile.GetSectionNames
Set list = CreateObject("Quill.List")
list.Info = "Where do you work today? Your network drives depend on it."
office = list.Selection(offices, 0, "Choose your office")
If office = "" Then
  WScript.Echo "No office chosen; the tour ends here."
  WScript.Quit 1
End If
WScript.Echo "Office chosen: " & office

' 4. The same object asks for several lines: Shift, Ctrl and the mouse extend the choice.
list.MultiSel = True
list.Info = ""
list.ButtonText = "Connect"
drives = list.Selection(profile.GetSection(office), 0, "Choose your drives")
If drives = "" Then
  WScript.Echo "No drives chosen; the tour ends here."
  WScript.Quit 1
End If
WScript.Echo "Drives chosen:"
WScript.Echo drives

' 5. Quill.CheckList turns things on and off: the bits of a number say which.
Set checks = CreateObject("Quill.CheckList")
checks.Info = "What else should be done, " & user & "?"
chores = checks.Selection("Check for mail" & vbCrLf & "Back up the settings", 1, "Choose your chores")

' 6. Quill.ProgressWindow shows how far the work is; Quill.Clock paces it here.
Set window = CreateObject("Quill.ProgressWindow")
Set clock = CreateObject("Quill.Clock")
window.MainText = "Connecting your drives ..."
window.Create "Working"
For step = 1 To 20
  window.Progress = 5 * step
  window.SubText = "Step " & step & " of 20"
  clock.SetTimer 50
  clock.Wait
Next
window.Remove

' 7. What was chosen is kept for the next time.
profile.SetValue "Last choice", "Office", office
profile.SetValue "Last choice", "Chores", chores
WScript.Echo "Kept in the file: " & profile.GetValue("Last choice", "Office") & ", " & _
             profile.GetValue("Last choice", "Chores")
WScript.Echo "The tour is complete."

Sub AddOffice(name, server)
  profile.SetSection name, "H=\\" & server & "\home" & vbCrLf & _
                           "P=\\" & server & "\projects" & vbCrLf & _
                           "S=\\" & server & "\shared"
End Sub
