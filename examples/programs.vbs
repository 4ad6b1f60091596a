' Lists the programs that are installed, of 64 and of 32 bits, with Quill.Registry.
' Run it with:  cscript //nologo programs.vbs [part of a name]
Option Explicit

Dim registry, wanted
Set registry = CreateObject("Quill.Registry")
If WScript.Arguments.Count > 0 Then wanted = WScript.Arguments(0)

List "For all users, 64 bits", "HKLM", 1
List "For all users, 32 bits", "HKLM", 2
List "For this user", "HKCU", 0

' Shows the programs below a root in one view of the registry.
Sub List(title, root, view)
  Dim path, keys, key, name, version
  WScript.Echo title
  path = root & "\Software\Microsoft\Windows\CurrentVersion\Uninstall"
  registry.Access64 = view
  If registry.GetItems(path, keys) = 0 Then
    WScript.Echo "  none (" & registry.ErrorCode & ")"
    Exit Sub
  End If
  For Each key In keys
    ' Updates and parts of other programs have no name; what is not there is Empty.
    name = registry.RegRead(path & "\" & key & "\DisplayName")
    version = registry.RegRead(path & "\" & key & "\DisplayVersion")
    If name <> "" And InStr(1, name, wanted, vbTextCompare) > 0 Then
      WScript.Echo "  " & name & "  " & version
    End If
  Next
End Sub
