Option Explicit

' Wine makes no sound here; what reaches the platform is tested elsewhere. The calls return.
Dim host: Set host = CreateObject("QuillTest.Host")
Dim noise: Set noise = CreateObject("Quill.Noise")

On Error Resume Next
noise.Ring
noise.Ring 20, 5
noise.MsgBeep
noise.MsgBeep 17
noise.Play "SystemStart", 0, 0
noise.Play "MISSING", CreateObject("Quill.Me").hInstance, &H40004
noise.PlayFile host.Folder & "missing.wav"
noise.PlayFile String(261, "x")
noise.PlayEvent "SystemExclamation", 1
noise.PlayEvent ""
host.CheckEqual Err.Number, 0, "quiet in the other sense too"
noise.Ring "many"
host.CheckEqual Err.Number, 13, "a tone is a number"
host.Done
