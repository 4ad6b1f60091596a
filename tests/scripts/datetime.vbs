Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim dateTime: Set dateTime = CreateObject("Quill.DateTime")

' The script's own clock is local; both ways agree on it.
Dim before: before = Now
Dim utc: utc = dateTime.SysNow
host.Check Seconds(dateTime.ConvertTime(utc, True) - before) < 5, "SysNow is now"
host.CheckEqual dateTime.ConvertTime(dateTime.ConvertTime(before, False), True), before, "there and back"
host.Check CDbl(dateTime.SysTime) >= 0 And CDbl(dateTime.SysTime) < 1, "SysTime has no date"
host.CheckEqual Int(CDbl(dateTime.SysDate)), CDbl(dateTime.SysDate), "SysDate has no time"
host.CheckEqual CDbl(dateTime.ConvertTime(CDate(-110000), True)), 0, "before the system's dates"

dateTime.TimeInfoRefresh
Dim bias: bias = dateTime.TimeBias
If dateTime.TimeZoneType = 2 Then bias = dateTime.TimeBiasDST
host.Check Seconds(dateTime.ConvertTime(before, False) - before - bias / 1440) < 1, "the bias that is in force"
host.Check dateTime.TimeZoneName <> "", "TimeZoneName"
host.Done

Function Seconds(days)
    Seconds = Abs(CDbl(days)) * 86400
End Function
