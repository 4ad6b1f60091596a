' The first page of an installation, with Quill.TaskDialog: links that say what they do, a choice of
' components, a check box, a text to fold out and a footer. Nothing is installed.
' Run it with:  cscript //nologo install.vbs
Option Explicit

Const ButtonCancel = 8, CommandLinks = 1, CanCancel = 8 ' the last one: Esc and the close box
Const IconInformation = -3, IconShield = -4
Const FirstLink = 101, SecondLink = 102                 ' what ShowEx returns for them

Dim dialog, scope, components

Set dialog = CreateObject("Quill.TaskDialog")
dialog.Title = "Greeting 2.0"
dialog.Text = "Who should use Greeting on this computer?"
dialog.SubText = "The program needs 12 MB and can be removed at any time."

' The part of a link below its first line is shown smaller.
dialog.CustomButtonStyle = CommandLinks
dialog.CustomButtons = Array("&Only me" & vbLf & "Needs no administrator rights.", _
                             "&Everybody" & vbLf & "An administrator has to agree.")
dialog.Buttons = ButtonCancel
dialog.Options = CanCancel

dialog.RadioButtons = Array("The &program alone", "With e&xamples", "With examples and so&urces")
dialog.RadioButtonSelected = 2

dialog.ExpandLabelCo = "Show details"
dialog.ExpandLabelEx = "Hide details"
dialog.ExpandText = "A folder ""Greeting"" and an entry in the start menu are made. " & _
                    "No other settings are touched."
dialog.VerificationLabel = "&Start Greeting afterwards"
dialog.VerificationChecked = True
dialog.FooterIcon = IconShield
dialog.FooterText = "Greeting does not connect to the network."

Select Case dialog.ShowEx
Case FirstLink
  scope = "the current user"
Case SecondLink
  scope = "all users"
Case Else
  If dialog.ErrorCode <> 0 Then WScript.Echo "No dialog: error " & Hex(dialog.ErrorCode)
  WScript.Echo "Greeting was not installed."
  WScript.Quit 1
End Select

' What the user chose besides is in the properties now, and would be shown again the next time.
components = Array("program", "program, examples", "program, examples, sources")
WScript.Echo "Install for " & scope & ": " & components(dialog.RadioButtonSelected - 1)
If dialog.VerificationChecked Then WScript.Echo "Start it afterwards"

' The short form: the text below the first one follows a NUL character.
dialog.Icon = IconInformation
dialog.Show "Greeting is ready." & Chr(0) & "It was installed for " & scope & ".", 1
WScript.Echo "Greeting was installed for " & scope & "."
