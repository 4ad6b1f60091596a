' A tour of quill: settings are written and read, and the user chooses from lists.
' Run it with:  cscript //nologo tour.vbs
Option Explicit

Dim path, profile, list, offices, office, drives

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

' 2. Quill.List asks for one line. The names of all sections, as Profile returns them, are just
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

' 3. The same object asks for several lines: Shift, Ctrl and the mouse extend the choice.
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

' 4. What was chosen is kept for the next time.
profile.SetValue "Last choice", "Office", office
WScript.Echo "Kept in the file: " & profile.GetValue("Last choice", "Office")
WScript.Echo "The tour is complete."

Sub AddOffice(name, server)
  profile.SetSection name, "H=\\" & server & "\home" & vbCrLf & _
                           "P=\\" & server & "\projects" & vbCrLf & _
                           "S=\\" & server & "\shared"
End Sub
