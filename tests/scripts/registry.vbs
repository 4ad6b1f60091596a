Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim registry: Set registry = CreateObject("Quill.Registry")
Dim shell: Set shell = CreateObject("WScript.Shell")
Dim top: top = "HKCU\Software\QuillTestScript"
Dim items, value

shell.RegWrite top & "\", "default"
shell.RegWrite top & "\name", "text"
shell.RegWrite top & "\number", 42, "REG_DWORD"
shell.RegWrite top & "\path", "%SystemRoot%\x", "REG_EXPAND_SZ"
shell.RegWrite top & "\sub\deep\name", "found"

host.CheckEqual registry.RegRead(top & "\name"), "text", "RegRead"
host.CheckEqual registry.RegRead(top & "\"), "default", "RegRead of the default value"
host.CheckEqual registry.RegRead(top, "number"), 42, "RegRead with sVal"
host.CheckEqual registry.RegRead1(top & "\number", "name"), 42, "RegRead1"
host.CheckEqual InStr(registry.RegRead(top & "\path"), ":\") > 0, True, "expanded"
registry.ConvertStr = False
host.CheckEqual registry.RegRead(top & "\path"), "%SystemRoot%\x", "not expanded"
host.CheckEqual registry.ErrorCode, 0, "ErrorCode"
host.CheckEqual IsEmpty(registry.RegRead(top & "\none")), True, "RegRead of nothing"
host.CheckEqual registry.ErrorCode, 802, "ErrorCode of nothing"

host.CheckEqual registry.RegEntryExists(top), 1, "a key"
host.CheckEqual registry.RegEntryExists1(top & "\name"), 2, "a value"

' Arrays arrive as scripts can use them.
host.CheckEqual registry.GetItems(top, items), 1, "GetItems of subkeys"
host.CheckEqual items(0), "sub", "the subkey"
registry.ItemType = 1
host.CheckEqual registry.GetItems(top, items), 4, "GetItems of values"
host.CheckEqual UBound(items), 3, "the values"
Dim elements(2)
host.CheckEqual registry.GetItems(top, elements), 0, "GetItems into an array"
host.CheckEqual registry.ErrorCode, 801, "ErrorCode of an array"

host.CheckEqual registry.Search("NAME", top), top & "\name", "Search"
registry.Continue = 1
value = registry.Search("na*", top)
host.CheckEqual value, top & "\sub\deep\name", "Search further"
host.CheckEqual registry.RegRead(value), "found", "what was found"
registry.Continue = 2
host.CheckEqual registry.Search("name", top), "", "Search to the end"
host.CheckEqual registry.ErrorCode, 802, "ErrorCode of the end"

' Not every host can delete keys by itself.
shell.Run "reg delete " & top & " /f", 0, True
host.CheckEqual registry.RegEntryExists(top), 0, "deleted"

host.Done
