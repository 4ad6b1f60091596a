' What this computer is: names, version of Windows, drives and time zone, with Quill.System,
' Quill.OsVersion, Quill.DateTime and Quill.Me.
' Run it with:  cscript //nologo machine.vbs
Option Explicit

Dim system, version, clock, server, letter, drive, firmware

Set system = CreateObject("Quill.System")
Set version = CreateObject("Quill.OsVersion")
Set clock = CreateObject("Quill.DateTime")
Set server = CreateObject("Quill.Me")

Row "User", system.UserName
Row "Computer", system.ComputerName(3) ' with its domain
Select Case system.NetworkType
  Case 2 Row "Workgroup", system.NetworkName
  Case 3 Row "Domain", system.NetworkName
End Select

Row "Windows", version.Major & "." & version.Minor & ", build " & version.Build & ", " & 32 * (1 + version.Bitness) & " bits"
firmware = system.BiosMode
If firmware = 0 Then firmware = system.BiosMode(1) ' Windows 7 knows this way only
If firmware = 1 Then Row "Firmware", "BIOS"
If firmware = 2 Then Row "Firmware", "UEFI"
Row "Screen", system.GetMetrics(0) & " x " & system.GetMetrics(1)

For letter = Asc("C") To Asc("Z")
  drive = Chr(letter) & ":"
  If system.VolumeGetFileSys(drive) <> "" Then
    Row "Drive " & drive, SerialOf(drive) & "  " & system.VolumeGetFileSys(drive) & "  " & system.VolumeGetName(drive)
  End If
Next

Row "Time zone", clock.TimeZoneName
Row "From UTC", Offset(clock.TimeBias)
If clock.TimeZoneType <> 0 Then Row "In summer", Offset(clock.TimeBiasDST)
Row "UTC", clock.SysNow
Row "Local time", clock.ConvertTime(clock.SysNow, True)
Row "Told by", "Quill " & server.Version

Sub Row(name, value)
  WScript.Echo Left(name & String(12, " "), 12) & value
End Sub

' A serial number as the system's own tools show it: 1A2B-3C4D.
Function SerialOf(drive)
  SerialOf = Right(String(7, "0") & Hex(system.VolumeGetSN(drive)), 8)
  SerialOf = Left(SerialOf, 4) & "-" & Right(SerialOf, 4)
End Function

' UTC minus local time in minutes, as +05:30.
Function Offset(bias)
  Offset = "+"
  If bias > 0 Then Offset = "-"
  Offset = Offset & Right("0" & Abs(bias) \ 60, 2) & ":" & Right("0" & Abs(bias) Mod 60, 2)
End Function
