' Prints values of all kinds that come from the server, for comparing script hosts.
Option Explicit

Dim aux: Set aux = CreateObject("Quill.Aux")
Dim text: text = "b,a,c"
WScript.Echo aux.Join(aux.Sort(aux.Split(text, ",")), "-")
WScript.Echo aux.FormatByteSize(1536)
WScript.Echo aux.Hex64(CCur("4294967296"))
WScript.Echo aux.EncodeHex(aux.TextToBytes("quill"))
WScript.Echo TypeName(aux.VariantArray(Array(1, CLng(2), 3.5, "four", True, Null)))

Dim moment: moment = DateSerial(2000, 1, 1) + TimeSerial(12, 0, 0)
Dim clock: Set clock = CreateObject("Quill.DateTime")
WScript.Echo CStr(clock.ConvertTime(clock.ConvertTime(moment, True), False) = moment)

' Errors arrive with number, source and text.
On Error Resume Next
CreateObject("Quill.Profile").GetSectionNames
WScript.Echo Hex(Err.Number) & " " & Err.Source & ": " & Err.Description
Err.Clear
CreateObject("Quill.Profile").ErrorLevel = 100000
WScript.Echo Hex(Err.Number)
On Error GoTo 0
WScript.Echo "end"
