Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim me_: Set me_ = CreateObject("Quill.Me")
Dim files: Set files = CreateObject("Scripting.FileSystemObject")

' Against the file that these say is the program.
Dim program: program = me_.Path & "\quill.exe"
host.Check files.FileExists(program), "the program lies in Path"
host.CheckEqual me_.Version & ".1.0", files.GetFileVersion(program), "Version"
host.CheckEqual me_.About, "QUILL script helper by OBRA Copyright (c) 2026 OBRA", "About"
host.Check me_.hInstance <> 0, "hInstance"

' Against what the system's own object for processes says.
Dim services: Set services = CreateObject("WbemScripting.SWbemLocator").ConnectServer(".", "root\cimv2")
Dim process, found: found = 0
For Each process In services.ExecQuery("SELECT * FROM Win32_Process WHERE Name='quill.exe'")
    found = found + 1
    host.CheckEqual me_.ProcessID, process.ProcessId, "ProcessID"
    host.CheckEqual me_.ParentProcessID, process.ParentProcessId, "ParentProcessID"
    host.CheckEqual process.ThreadCount > 1, True, "threads"
Next
host.CheckEqual found, 1, "servers"

' One thread serves all objects of this kind, and it is none of the callers'.
Dim other: Set other = CreateObject("Quill.Me")
host.CheckEqual other.ThreadID, me_.ThreadID, "ThreadID"
host.Check me_.CallerTID <> me_.ThreadID, "CallerTID"
host.Done
