' Tells the size of PNG, GIF and BMP pictures from the first bytes of their files, with Quill.File
' and its BinFile.
' Run it with:  cscript //nologo imagesize.vbs picture.png [picture.bmp ...]
Option Explicit

Dim file, files, index
Set file = CreateObject("Quill.File")
Set files = CreateObject("Scripting.FileSystemObject")
If WScript.Arguments.Count = 0 Then WScript.Echo "imagesize.vbs picture.png [picture.bmp ...]"
For index = 0 To WScript.Arguments.Count - 1
  ' The server has a current directory of its own, so it is given full paths.
  WScript.Echo WScript.Arguments(index) & ": " & _
      SizeOf(files.GetAbsolutePathName(WScript.Arguments(index)))
Next

' "640 x 480", or what is wrong with the file.
Function SizeOf(path)
  Dim picture, mark
  Set picture = file.OpenBinary(path, False)   ' for reading only
  If picture Is Nothing Then
    SizeOf = "cannot be opened"
    Exit Function
  End If

  picture.ConvertAnsi = True                   ' one character a byte
  If Not picture.BRead(mark, 8, vbString) Then mark = ""
  If Mid(mark, 2, 3) = "PNG" Then
    SizeOf = HighFirst(picture, 16) & " x " & HighFirst(picture, 20)
  ElseIf Left(mark, 3) = "GIF" Then
    SizeOf = LowFirst(picture, 6, vbInteger) & " x " & LowFirst(picture, 8, vbInteger)
  ElseIf Left(mark, 2) = "BM" Then
    ' The height is negative where the first row is the top one.
    SizeOf = LowFirst(picture, 18, vbLong) & " x " & Abs(LowFirst(picture, 22, vbLong))
  Else
    SizeOf = "no PNG, GIF or BMP picture"
  End If
  picture.BClose
End Function

' A number as Windows stores it is read in one go.
Function LowFirst(picture, position, numberType)
  Dim number
  picture.Location = position
  picture.BRead number, , numberType
  LowFirst = number
End Function

' The bytes of other numbers are put together, the highest first.
Function HighFirst(picture, position)
  Dim index, part
  picture.Location = position
  HighFirst = 0
  For index = 1 To 4
    picture.BRead part, , vbByte
    HighFirst = HighFirst * 256 + part
  Next
End Function
