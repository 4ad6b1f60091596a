Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim dialog: Set dialog = CreateObject("Quill.TaskDialog")

' The simple dialog: buttons and caption as arguments, then as properties.
host.Answer "Simple", "Button", "No", "click"
host.CheckEqual dialog.Show("Instruction" & Chr(0) & "Content", 6, "Simple"), 7, "No"
host.Check host.Answered, "the simple dialog"
dialog.Title = "Full"
dialog.Buttons = 9
host.Answer "Full", "Button", "Cancel", "keys {ENTER}"
host.CheckEqual dialog.Show("Instruction"), 1, "OK by Enter"
host.Check host.Answered, "Enter"

' Everything at once, and the answers read back.
dialog.Text = "Instruction"
dialog.SubText = "Content"
dialog.Icon = -1
dialog.Buttons = 8
dialog.Options = 8
dialog.CustomButtons = Array("&First", "&Second")
dialog.DefaultButton = 102
dialog.RadioButtons = Array("&Red", "&Green", "&Blue")
dialog.RadioButtonSelected = 0
dialog.VerificationLabel = "&Verify"
dialog.VerificationChecked = True
dialog.FooterText = "Footer"
dialog.FooterIcon = -3
dialog.ExpandText = "More"
host.Answer "Full", "Button", "Green", "click"
host.Answer "Full", "Button", "Verify", "click"
host.Answer "Full", "Button", "First", "keys {ENTER}"
host.CheckEqual dialog.ShowEx, 102, "Enter presses the default button"
host.Check host.Answered, "radio button and check box"
host.CheckEqual dialog.RadioButtonSelected, 2, "Green"
host.CheckEqual dialog.VerificationChecked, False, "the check box"
host.CheckEqual dialog.ErrorCode, 0, "ErrorCode"

' What was read back is shown the next time. (Esc would cancel as well, but Wine's dialog does not
' hear it.)
host.Answer "Full", "Button", "Second", "close"
host.CheckEqual dialog.ShowEx, 2, "the close box cancels"
host.Check host.Answered, "the close box"
host.CheckEqual dialog.RadioButtonSelected, 2, "still Green"

' A run-time error on the way is told by ErrorCode alone.
dialog.RadioButtons = Array("Red", Null)
host.CheckEqual dialog.ShowEx, 0, "a caption of Null"
host.CheckEqual dialog.ErrorCode, 94, "invalid use of Null"
dialog.IconResFile = "shell32.dll"
dialog.IconResID = "#x"
host.CheckEqual dialog.Show("x"), 0, "an icon without a number"
host.CheckEqual dialog.ErrorCode, 13, "type mismatch"
host.Done
