' Asks for a new user with Quill.MInputBox: fields of several kinds in one form, which checks what
' is entered, and writes a text file for the one who sets up the account.
' Run it with:  cscript //nologo account.vbs [folder]
Option Explicit

Const Text = 0, Password = 1, CheckBox = 4, ComboBox = 5, DateField = 7, Folder = 10 ' InpType

Dim start, files, box, entry, values, path, order

Set files = CreateObject("Scripting.FileSystemObject")
If WScript.Arguments.Count > 0 Then
  start = WScript.Arguments(0)
Else
  start = CreateObject("WScript.Shell").ExpandEnvironmentStrings("%TEMP%")
End If

Set box = CreateObject("Quill.MInputBox")
box.Title = "New account"
box.Info = "The account is ready on its first day."
box.InputNumber = 7
box.LabelEditRatio = 3
box.AccPrefix = True   ' Alt and the underlined letter lead to a field
box.ShowTipControl = 2 ' tips, and what is wrong, in a line below the fields
box.CancelText = "Cancel"
box.InpLabel = Array("&Name", "&Password", "&Again", "&First day", "&Office", "For&ms in", "&I have read the rules")
box.InpType = Array(Text, Password, Password, DateField, ComboBox, Folder, CheckBox)
box.InpItems = Array(Empty, Empty, Empty, Empty, Array("Hamburg", "Lisbon", "Oslo"))
box.InpText = Array("", "", "", Date, "Oslo", start, False)
box.InpTipText = Array("First and last name", "Eight characters or more", "The same once more", _
                       "From today on", "Choose an office, or type its town", "The folder for your forms")
box.InpRequired = Array(True, True, True, False, True, True, True)
box.InpPattern = Array("* *")
box.InpMinLen = Array(0, 8)
box.MinBalloonText = "Eight characters or more, please."
box.InpSameAs = Array(Empty, Empty, 1)
box.InpMin = Array(Empty, Empty, Empty, Date)
box.InpErrorText = Array("First and last name, please.", Empty, "The two passwords differ.", Empty, _
                         Empty, Empty, "Nobody works here without the rules.")

If Not box.InputM(entry) Then
  WScript.Echo "No account was ordered."
  WScript.Quit 1
End If

values = box.Values ' entry has texts; here the first day is a Date
path = files.BuildPath(entry(5), "account.txt")
Set order = files.CreateTextFile(path, True, True) ' Unicode
order.WriteLine "Name: " & entry(0)
order.WriteLine "Office: " & entry(4)
order.WriteLine "First day: " & entry(3)
order.Close
WScript.Echo entry(0) & ", " & entry(4) & ", " & Len(entry(1)) & " characters, in " & values(3) - Date & " days"
