Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim system: Set system = CreateObject("Quill.System")
Dim shell: Set shell = CreateObject("WScript.Shell")
Dim files: Set files = CreateObject("Scripting.FileSystemObject")

' What a command of the system prints, in one line.
Function Printed(command)
    Dim path: path = host.Folder & "printed"
    shell.Run "cmd /c " & command & ">""" & path & """", 0, True
    Printed = Replace(files.OpenTextFile(path).ReadAll, vbCrLf, "")
End Function

' Names, against the environment and the system's tools.
host.CheckEqual system.UserName, Printed("echo %USERNAME%"), "UserName"
host.CheckEqual system.ComputerName, Printed("echo %COMPUTERNAME%"), "ComputerName"
host.CheckEqual LCase(system.ComputerName(1)), LCase(Printed("hostname")), "ComputerName 1"
host.CheckEqual LCase(system.ComputerName(4)), LCase(Left(system.ComputerName(5), 15)), "ComputerName 4 and 5"
Dim whole: whole = system.ComputerName(1)
If system.ComputerName(2) <> "" Then whole = whole & "." & system.ComputerName(2)
host.CheckEqual system.ComputerName(3), whole, "ComputerName 3"
host.Check system.NetworkName <> "", "NetworkName"
host.Check system.NetworkType >= 1 And system.NetworkType <= 3, "NetworkType"

' Numbers.
Dim architecture: architecture = Printed("echo %PROCESSOR_ARCHITECTURE%")
If system.ProcessorArchitecture = 0 Then host.CheckEqual architecture, "x86", "ProcessorArchitecture"
host.Check system.ProcessorInfo = 586 Or system.ProcessorInfo = 8664, "ProcessorInfo"
host.CheckEqual system.GetMetrics(0), 1280, "width of the test's screen"
host.CheckEqual system.GetMetrics(1), 1024, "height of the test's screen"
host.CheckEqual CStr(system.CurrentCodePage), shell.RegRead("HKLM\System\CurrentControlSet\Control\Nls\CodePage\ACP"), "CurrentCodePage"
host.CheckEqual system.BiosMode(1), 1, "BiosMode of a system without firmware variables"

' The volume, against `vol`.
Dim serial: serial = Hex(system.VolumeGetSN("C:"))
serial = Right(String(8, "0") & serial, 8)
host.Check InStr(Printed("vol c:"), Left(serial, 4) & "-" & Right(serial, 4)) > 0, "VolumeGetSN is " & serial
host.Check system.VolumeGetFileSys("C:") <> "", "VolumeGetFileSys"
host.CheckEqual system.VolumeGetName("C:\"), "", "VolumeGetName of a volume without a label"
host.CheckEqual Left(system.VolumeGetGUID("C:"), 11), "\\?\Volume{", "VolumeGetGUID"
host.CheckEqual system.VolumeGetSN("Q:"), 0, "no such drive"

' The version, against `ver`.
Dim version: Set version = CreateObject("Quill.OsVersion")
host.Check InStr(Printed("ver"), " " & version.Major & "." & version.Minor & "." & version.Build) > 0, "OsVersion"
host.CheckEqual version.Number, version.Major * 100 + version.Minor, "Number"
host.CheckEqual version.Bitness, Abs(Printed("echo %PROCESSOR_ARCHITEW6432%") <> "%PROCESSOR_ARCHITEW6432%"), "Bitness"
host.CheckEqual version.Product, 1, "Product"
host.Done
