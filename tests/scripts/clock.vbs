Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim clock: Set clock = CreateObject("Quill.Clock")

host.Listen clock
host.CheckEqual clock.SetTimer(50), True, "SetTimer"
host.Check host.Pump(5000), "an event came"
host.CheckEqual host.Heard("Buzz"), 1, "it was Buzz"

' Each SetTimer gives one, and the last one counts.
host.CheckEqual clock.SetTimer(60000), True, "SetTimer"
host.CheckEqual clock.SetTimer(50), True, "SetTimer again"
host.Check host.Pump(5000), "the shorter time counts"
clock.SetTimer 100
clock.RemoveTimer
host.CheckEqual clock.SetTimer(0), False, "SetTimer 0"
host.Check Not host.Pump(300), "nothing after RemoveTimer"
host.CheckEqual host.Heard("Buzz"), 2, "one Buzz for each SetTimer that ran out"

' Without events.
host.CheckEqual clock.Running, False, "not running"
host.CheckEqual clock.Wait, False, "nothing to wait for"
clock.SetTimer 60000
host.CheckEqual clock.Wait(50), False, "a limit shorter than the time"
host.CheckEqual clock.Running, True, "still running"
clock.SetTimer 50
host.CheckEqual clock.Wait, True, "the time is over"
host.CheckEqual clock.Running, False, "no longer running"
host.Check host.Pump(5000), "Buzz was raised as well"
host.Done
