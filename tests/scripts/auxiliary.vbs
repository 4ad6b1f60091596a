Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim aux: Set aux = CreateObject("Quill.Aux")

' A typed array cannot be indexed by this language; what comes back of it can.
Dim bytes: bytes = aux.TextToBytes("h" & Chr(0) & "llo")
host.CheckEqual VarType(bytes), 8209, "TextToBytes"
Dim list: list = aux.VariantArray(bytes)
host.CheckEqual UBound(list), 4, "VariantArray"
host.CheckEqual CInt(list(4)), 111, "an element of it"
host.CheckEqual aux.BytesToText(bytes), "h" & Chr(0) & "llo", "BytesToText"
host.CheckEqual aux.EncodeBase64(bytes), "aABsbG8=", "EncodeBase64"
host.CheckEqual aux.EncodeHex(aux.TypedArray(list, 17)), "68006C6C6F", "TypedArray"
host.CheckEqual aux.Hash("abc", "md5"), "900150983CD24FB0D6963F7D28E17F72", "Hash"

' Arrays by value, and variables of the script.
host.CheckEqual aux.Join(aux.Sort(Array(10, 9, "8"), True, True), " "), "10 9 8", "Sort by number"
Dim names(2): names(0) = "b": names(1) = "a": names(2) = "b"
host.CheckEqual aux.Join(aux.Sort(names), ""), "abb", "Sort of a declared array"
host.CheckEqual CStr(names(0)), "b", "the array itself stays"
host.CheckEqual UBound(aux.Unique(names)), 1, "Unique"
Dim sought: sought = "B"
host.CheckEqual aux.Find(names, sought, 1, True), 2, "Find"
host.CheckEqual UBound(aux.Split("", ",")), -1, "an empty list"

host.CheckEqual aux.DecodeUrl(aux.EncodeUrl("a b&c")), "a b&c", "EncodeUrl"
Dim parts: parts = aux.SplitUrl("http://host:81/x")
host.CheckEqual CStr(parts(4)), "81", "SplitUrl"
host.CheckEqual aux.CombinePath("C:\a", "..\b"), "C:\b", "CombinePath"
host.CheckEqual aux.MatchName("a.TXT", "*.doc;*.txt"), True, "MatchName"
parts = aux.SplitCommandLine("x.exe ""a b""")
host.CheckEqual CStr(parts(1)), "a b", "SplitCommandLine"
host.CheckEqual aux.FormatByteSize(1024), "1.00 KB", "FormatByteSize"
host.CheckEqual aux.Hex64(CCur(1)), "2710", "Hex64"

' Nothing that it cannot use is an error.
host.CheckEqual aux.Hash(Nothing), "", "no bytes"
host.CheckEqual aux.HashFile(host.Folder & "none"), "", "no file"
host.CheckEqual aux.Find(Null, 1), -1, "no list"

host.Done
