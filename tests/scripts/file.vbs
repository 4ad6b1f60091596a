Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim file: Set file = CreateObject("Quill.File")
Dim path: path = host.Folder & "script.bin"
Dim data

' The whole way, on a file that the script made itself.
host.CheckEqual file.Exists(path), False, "Exists before"
host.CheckEqual file.Create(path), True, "Create"
host.CheckEqual file.Create(path), False, "Create again"
host.CheckEqual file.Exists(host.Folder & "*.bin"), True, "Exists with a pattern"
host.CheckEqual file.OpenBinary(host.Folder & "missing") Is Nothing, True, "OpenBinary of a missing file"

Dim binary: Set binary = file.OpenBinary(path)
host.CheckEqual TypeName(binary) <> "Nothing", True, "OpenBinary"
host.CheckEqual file.OpenBinary(path) Is Nothing, True, "OpenBinary while it is open"
host.CheckEqual binary.BWrite("text"), True, "BWrite of a string"
data = CLng(258)
host.CheckEqual binary.BWrite(data), True, "BWrite of a variable"
host.CheckEqual binary.BWrite(CCur(1.5)), True, "BWrite of a Currency"
host.CheckEqual binary.LOF, 16, "LOF"
host.CheckEqual binary.LOC, 16, "LOC"

binary.LOC = 4
host.CheckEqual binary.BRead(data, , 3), True, "BRead of a Long"
host.CheckEqual data, 258, "the Long"
host.CheckEqual VarType(data), vbLong, "its type"
host.CheckEqual binary.BRead(data, , vbCurrency), True, "BRead of a Currency"
host.CheckEqual data, 1.5, "the Currency"
binary.Location = 0
binary.ConvertAnsi = True
host.CheckEqual binary.BRead(data, 4, vbString), True, "BRead of a string"
host.CheckEqual data, "text", "the string"

' Bytes travel back and forth as they are.
binary.Location = 0
host.CheckEqual binary.BRead(data, 4), True, "BRead of bytes"
host.CheckEqual VarType(data), vbArray + vbByte, "their type"
binary.LOC = binary.LOF
host.CheckEqual binary.BWrite(data), True, "BWrite of bytes"
binary.LOC = 16
host.CheckEqual binary.BRead(data, 10, vbString), True, "BRead over the end"
host.CheckEqual Left(data, binary.ByteCount), "text", "what was there"
host.CheckEqual binary.EOF, True, "EOF"

' A file beyond 4 GB, which takes hardly any room.
binary.LOC = CCur(5000000000)
host.CheckEqual binary.BWrite(CByte(7)), True, "BWrite beyond 4 GB"
host.CheckEqual binary.LOF, 5000000001, "LOF beyond 4 GB"
host.CheckEqual binary.Length2, 1, "Length2"
host.CheckEqual binary.Length, 705032705, "Length"
binary.LOC = 16
host.CheckEqual binary.BTrim, True, "BTrim"

' Errors, as On Error code sees them.
Sub CheckLastError(number, description)
    host.CheckError Err.Number, Err.Source, Err.Description, number, "Quill.BinFile", description
    Err.Clear
End Sub
Dim elements(3)
On Error Resume Next
binary.BRead elements, 4
CheckLastError &H80040360, "Wrong argument (wrong Variant type)"
binary.BClose
binary.BFlush
CheckLastError &H8004034A, "File is not open: " & path
On Error GoTo 0

' Times, also of a folder.
Dim noon: noon = #1/2/2003 12:00:00#
host.CheckEqual file.TimeSet(path, noon), True, "TimeSet"
host.CheckEqual file.TimeGet(path) = noon, True, "TimeGet"
host.CheckEqual file.TimeSet(host.Folder, noon, 4), True, "TimeSet of a folder"
host.CheckEqual file.TimeCompare(path, host.Folder), 1, "TimeCompare"

file.Create host.Folder & "new.bin"
host.CheckEqual file.Replace(path, host.Folder & "new.bin", host.Folder & "old.bin"), True, "Replace"
host.CheckEqual file.Exists(host.Folder & "old.bin"), True, "the backup"
Set binary = file.OpenBinary(path, False)
host.CheckEqual binary.LOF, 0, "the replacement"

host.Done
