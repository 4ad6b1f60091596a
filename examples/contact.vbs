' Asks for a new contact with Quill.MInputBox, five fields in one dialog, and adds it to a table
' that spreadsheets open.
' Run it with:  cscript //nologo contact.vbs [contacts.csv]
Option Explicit

Const Digits = 3 ' InpTextStyle

Dim path, box, entry, line, i, files, table

Set files = CreateObject("Scripting.FileSystemObject")
If WScript.Arguments.Count > 0 Then
  path = WScript.Arguments(0)
Else
  path = CreateObject("WScript.Shell").ExpandEnvironmentStrings("%TEMP%\quill-contacts.csv")
End If

Set box = CreateObject("Quill.MInputBox")
box.Title = "New contact"
box.Info = "The contact is added to " & files.GetFileName(path) & "."
box.InputNumber = 5
box.LabelEditRatio = 2 ' a quarter of each row for the labels
box.AccPrefix = True   ' Alt and the underlined letter lead to a field
box.ShowTipControl = 2 ' tips in a line below the fields
box.InpLabel = Array("&Name", "&E-mail", "&Phone", "&Birth year", "N&ote")
box.InpCueText = Array("first and last name", "name@example.com", "+49 40 123456")
box.InpTipText = Array("At least two characters", "For invitations", "With country code", _
                       "Four digits", "Anything else")
box.InpMinLen = Array(2, 0, 0, 0, 0)
box.InpMaxLen = Array(60, 60, 30, 4, 200)
box.InpTextStyle = Array(0, 2, 0, Digits, 0) ' 2: lower case
box.MinBalloonTitle = "Too short"
box.MinBalloonText = "A contact needs a name."

If Not box.InputM(entry) Then
  WScript.Echo "No contact was added."
  WScript.Quit 1
End If

line = ""
For i = 0 To UBound(entry)
  If i > 0 Then line = line & ","
  line = line & """" & Replace(entry(i), """", """""") & """"
Next
Set table = files.OpenTextFile(path, 8, True, -1) ' appends, Unicode
table.WriteLine line
table.Close
WScript.Echo "Added: " & line
