' Numbers the lines of the text on the clipboard, with Quill.Clipboard: copy some lines, run this,
' and paste.
' Run it with:  cscript //nologo clipboard.vbs
Option Explicit

Dim clipboard, lines, text, index, width

Set clipboard = CreateObject("Quill.Clipboard")
clipboard.UseUnicode = True ' keep every character
text = clipboard.Text
If text = "" Then
  WScript.Echo "There is no text on the clipboard."
  WScript.Quit 1
End If

' A line break at the end begins no line of its own.
If Right(text, 2) = vbCrLf Then text = Left(text, Len(text) - 2)
lines = Split(text, vbCrLf)
width = Len(CStr(UBound(lines) + 1))
text = ""
For index = 0 To UBound(lines)
  text = text & Right(String(width, " ") & (index + 1), width) & "  " & lines(index) & vbCrLf
Next
clipboard.Text = text

' Another program may have kept the clipboard for itself.
If clipboard.Text = text Then
  WScript.Echo UBound(lines) + 1 & " lines are numbered."
Else
  WScript.Echo "The clipboard is in use. Try again."
  WScript.Quit 1
End If
