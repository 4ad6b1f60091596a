Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim notice: Set notice = CreateObject("Quill.Notice")

host.CheckEqual notice.ShowBalloon, False, "no balloon without an icon"
host.CheckEqual notice.ErrorCode, 1, "not added"
notice.IconID = 32516
notice.TipText = "A test"
host.CheckEqual notice.Add, True, "Add"
host.CheckEqual notice.Add, False, "Add again"
host.CheckEqual notice.ErrorCode, 1, "added already"

' A click by hand raises one event, and the property tells.
host.Listen notice
notice.TriggerEvent = True
OnIcon "click"
host.Check host.Pump(5000), "an event came"
host.CheckEqual host.HeardArgument("TrayClick", 0, 0), 1, "selected"
host.CheckEqual notice.TrayClicked, 1, "TrayClicked"
host.CheckEqual notice.TriggerEvent, False, "one event only"
notice.TrayClicked = 5
host.CheckEqual notice.TrayClicked, 0, "acknowledged"

Dim items: items = Array("Open", "-", "Quit")
notice.ContextMenu = items
host.CheckEqual notice.ContextMenuItems, 3, "ContextMenuItems"
items = notice.ContextMenu
host.CheckEqual items(2), "Quit", "ContextMenu"
notice.TriggerEvent = True
OnIcon "menu {DOWN}{DOWN}{ENTER}"
host.Check host.Pump(5000), "an event came"
host.CheckEqual host.HeardArgument("TrayClick", 1, 0), 12, "the separator does not count"

notice.BalloonTitle = "Title"
notice.BalloonText = "Something happened"
notice.BalloonIcon = 2
host.CheckEqual notice.ShowBalloon, True, "ShowBalloon"
host.Answer "Something happened", "tooltips_class32", "", "see"
host.Check host.Answered, "the balloon is there"
notice.Remove
host.CheckEqual notice.ChangeIcon, False, "removed"
host.Done

Sub OnIcon(action)
    host.Answer "Wine System Tray", "__winex11_tray_icon", "", action
    host.Check host.Answered, action & " on the icon"
End Sub
