Option Explicit

' Runs the example that the argument names as a user would, and checks how it ends.
Dim host: Set host = CreateObject("QuillTest.Host")
Dim files: Set files = CreateObject("Scripting.FileSystemObject")
Dim example: example = WScript.Arguments(0)
Dim folder: folder = host.Folder ' what examples write goes there
Dim started: started = Now

Select Case example
Case "backup.vbs"
    files.CreateFolder folder & "home"
    files.CreateFolder folder & "home\letters"
    host.Answer "Backup: folders", "SysListView32", "", "keys {SPACE}{ENTER}"
    host.Answer "Backup: drive", "Button", "OK", "click"
    host.Answer "Backup: time", "SysDateTimePick32", "", "keys {ENTER}"
    Run folder & "home", "schtasks /create /tn Backup /sc once /st 20:00 /tr " & folder & "home\backup.cmd"
    host.Check InStr(files.OpenTextFile(folder & "home\backup.cmd").ReadAll, "\home\letters"" ""C:\Backup\letters"" /e") > 0 Or _
        InStr(files.OpenTextFile(folder & "home\backup.cmd").ReadAll, "\home\letters"" ""Z:\Backup\letters"" /e") > 0, "the batch file"
Case "checksums.vbs"
    files.CreateFolder folder & "sums"
    Write "sums\a.txt", "abc"
    Run folder & "sums", "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD  a.txt  (3 bytes)"
Case "clipboard.vbs"
    Dim clipboard: Set clipboard = CreateObject("Quill.Clipboard")
    clipboard.Text = "one" & vbCrLf & vbCrLf & "three" & vbCrLf
    Run "", "3 lines are numbered."
    host.CheckEqual clipboard.Text, "1  one" & vbCrLf & "2  " & vbCrLf & "3  three" & vbCrLf, "what is to be pasted"
Case "confirm.vbs"
    Write "old.txt", "old"
    host.Answer "Delete a file", "Button", "Yes", "keys {ENTER}"
    Run folder & "old.txt", "Kept: " & folder & "old.txt"
    host.Check files.FileExists(folder & "old.txt"), "Enter alone deletes nothing"
    host.Answer "Delete a file", "Button", "Yes", "click"
    Run folder & "old.txt", "Deleted: " & folder & "old.txt"
    host.Check Not files.FileExists(folder & "old.txt"), "the file is gone"
Case "contact.vbs"
    host.Answer "New contact", "Edit", "", "keys Ann%b1x9{ENTER}"
    Run folder & "all.csv", "Added: ""Ann"","""","""",""19"","""""
    host.CheckEqual files.OpenTextFile(folder & "all.csv", 1, False, -1).ReadLine, """Ann"","""","""",""19"",""""", "the table"
Case "copytree.vbs"
    files.CreateFolder folder & "from"
    files.CreateFolder folder & "from\below"
    Write "from\a.txt", "one"
    Write "from\below\b.txt", "three"
    Run folder & "from""" & " """ & folder & "to", "Copied: 2 of 2 files, 8 bytes"
    host.Check files.FileExists(folder & "to\below\b.txt"), "the copy is complete"
Case "countdown.vbs"
    Run "2", "2 ..." & vbCrLf & "1 ..." & vbCrLf & "All 10 files were copied." & vbCrLf & "The countdown is complete."
    host.Check 86400 * (Now - started) > 0.5, "the seconds took their time"
Case "foldersizes.vbs"
    files.CreateFolder folder & "full"
    files.CreateFolder folder & "full\deep"
    Write "full\deep\a.txt", "seven.."
    host.Answer "Sizes of folders", "Button", "OK", "keys {ENTER}"
    Run folder & "full", "deep: 7" & vbCrLf & "Folders: 1, bytes: 7"
Case "imagesize.vbs"
    Write "a.bmp", "BM" & String(16, Chr(0)) & Chr(64) & String(3, Chr(0)) & Chr(48) & String(3, Chr(0))
    Run folder & "a.bmp", folder & "a.bmp: 64 x 48"
Case "joblog.vbs"
    Dim log: log = CreateObject("Quill.Aux").ExpandEnvironment("%LOCALAPPDATA%\Quill\jobs.log")
    Run "whoami", "Recorded in " & log
    host.Check InStr(files.OpenTextFile(log).ReadAll, "Ended well: ""whoami""") > 0, "the log says so"
    files.DeleteFile log
Case "install.vbs"
    host.Answer "Greeting 2.0", "Button", "Cancel", "keys %u%s%e"
    host.Answer "Greeting 2.0", "Button", "OK", "keys {ENTER}"
    Run "", "Install for all users: program, examples, sources" & vbCrLf & "Greeting was installed for all users."
Case "machine.vbs"
    Run "", "Told by     Quill 3.5"
Case "open-files.vbs"
    Write "first.txt", "one"
    Write "second.log", "seven"
    host.Answer "Choose the files to add up", "Edit", "", "keys ""first.txt"" ""second.log""{ENTER}"
    Run Left(folder, Len(folder) - 1), "  first.txt: 3" & vbCrLf & "  second.log: 5" & vbCrLf & "Files: 2, bytes: 8"
Case "programs.vbs"
    Dim key: key = """HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\QuillTest"" "
    Dim shell: Set shell = CreateObject("WScript.Shell")
    shell.Run "reg add " & key & "/v DisplayName /d ""A quill of our own"" /f", 0, True
    shell.Run "reg add " & key & "/v DisplayVersion /d 1.2 /f", 0, True
    Run "QUILL", "For this user" & vbCrLf & "  A quill of our own  1.2"
    shell.Run "reg delete " & key & "/f", 0, True
Case "settings.vbs"
    Write "own.ini", "[User]" & vbCrLf & "Name=somebody" & vbCrLf
    Run folder & "own.ini", "Top=80" & vbCrLf & vbCrLf & "Settings are in " & folder & "own.ini"
Case "tasks.js"
    host.Answer "Tasks", "ListBox", "", "keys {HOME}+{DOWN}{ENTER}"
    Run "", "Left:" & vbCrLf & "Back up the photos" & vbCrLf & "Pay the rent" & vbCrLf & vbCrLf & _
        "Tasks are in " & folder & "quill-tasks.txt"
Case "tour.vbs"
    host.Answer "Welcome to quill", "Edit", "", "keys Ann{ENTER}"
    host.Answer "Choose your office", "ListBox", "", "keys os{ENTER}"
    host.Answer "Choose your drives", "ListBox", "", "keys {DOWN}+{DOWN}{ENTER}"
    host.Answer "Choose your chores", "SysListView32", "", "keys {DOWN}{SPACE}{ENTER}"
    host.Answer "Working", "msctls_progress32", "", "wait"
    Run "", "Kept in the file: Oslo, 3" & vbCrLf & "The tour is complete."
Case "watch.vbs"
    Dim action
    files.CreateFolder folder & "inbox"
    host.Answer "Wine System Tray", "__winex11_tray_icon", "", "write " & folder & "inbox\report.txt"
    host.Answer "report.txt", "tooltips_class32", "", "see"
    ' It looks four times a second what was chosen; nobody chooses twice in that time.
    For Each action In Array("menu p", "rest 1000", "menu q")
        host.Answer "Wine System Tray", "__winex11_tray_icon", "", action
    Next
    Run folder & "inbox", "Files that came: 1"
Case Else
    host.Check False, "nobody knows how " & example & " ends"
End Select
host.Done

Sub Write(name, text)
    Dim file: Set file = files.CreateTextFile(folder & name, True)
    file.Write text
    file.Close
End Sub

' Runs the example to its end; its last lines must be these.
Sub Run(argument, ending)
    Dim output: output = vbCrLf & host.Run("..\..\examples\" & example, argument)
    host.CheckEqual Right(output, Len(ending) + 4), vbCrLf & ending & vbCrLf, example & " prints" & output
    host.Check host.Answered, example & " showed its dialogs"
    host.CheckEqual host.ExitCode, 0, "exit code of " & example
End Sub
