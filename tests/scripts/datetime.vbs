Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim dateTime: Set dateTime = CreateObject("Quill.DateTime")

' The script's own clock is local; both ways agree on it.
Dim before: before = Now
Dim utc: utc = dateTime.SysNow
host.Check Abs(DateDiff("s", before, dateTime.ConvertTime(utc, True))) <= 5, "SysNow is now"
host.CheckEqual dateTime.ConvertTime(dateTime.ConvertTime(before, False), True), before, "there and back"
host.CheckEqual DateValue(dateTime.SysTime), DateValue(0), "SysTime has no date"
host.CheckEqual TimeValue(dateTime.SysDate), TimeValue(0), "SysDate has no time"
host.CheckEqual dateTime.ConvertTime(#1600-01-01#, True), CDate(0), "before all time zones"

' The time zone, against the registry's copy of it.
dateTime.TimeInfoRefresh
Dim bias: bias = dateTime.TimeBias
If dateTime.TimeZoneType = 2 Then bias = dateTime.TimeBiasDST
host.CheckEqual DateDiff("n", before, dateTime.ConvertTime(before, False)), bias, "the bias that is in force"
host.Check dateTime.TimeZoneName <> "", "TimeZoneName"
host.Done
