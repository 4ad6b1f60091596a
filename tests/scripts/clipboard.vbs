Option Explicit

Dim host: Set host = CreateObject("QuillTest.Host")
Dim clipboard: Set clipboard = CreateObject("Quill.Clipboard")
Dim shell: Set shell = CreateObject("WScript.Shell")
Dim files: Set files = CreateObject("Scripting.FileSystemObject")
Dim path: path = host.Folder & "clip"

' xclip is a program of the display, outside of Wine; it reads and writes UTF-8.
Sub Outside(command)
    If files.FileExists(path & ".done") Then files.DeleteFile path & ".done"
    shell.Run "Z:\bin\sh -c ""file=$(winepath -u '" & Replace(path, "\", "/") & "'); " & command & "; echo >$file.done""", 0
    Dim begun: begun = Timer
    Do Until files.FileExists(path & ".done") Or Abs(Timer - begun) > 20
        host.Await "nobody", 20
    Loop
    host.Check files.FileExists(path & ".done"), command
End Sub

' Waits until the clipboard's text begins like this.
Function Arrived(begin)
    Dim begun: begun = Timer
    Do
        Arrived = clipboard.Text
    Loop Until Left(Arrived, Len(begin)) = begin Or Abs(Timer - begun) > 10
End Function

' Out.
host.CheckEqual clipboard.UseUnicode, False, "UseUnicode"
clipboard.Text = "caf" & Chr(233)
Outside "xclip -selection clipboard -o >$file"
host.CheckEqual files.OpenTextFile(path).ReadAll, "caf" & Chr(195) & Chr(169), "ANSI text outside"
clipboard.UseUnicode = True
Dim large: large = String(10485760, "x")
clipboard.Text = large
Outside "xclip -selection clipboard -o | wc -c >$file"
host.CheckEqual CLng(files.OpenTextFile(path).ReadAll), Len(large), "10 MB outside"

' In: a surrogate pair, a private character, a Chinese one.
Outside "printf 'outside \360\237\230\200\356\200\200\344\270\255' | xclip -selection clipboard"
Dim text: text = Arrived("outside")
host.CheckEqual Len(text), 12, "length of Unicode text from outside"
clipboard.UseUnicode = False
host.CheckEqual clipboard.Text, "outside ????", "ANSI text from outside"
clipboard.UseUnicode = True
clipboard.Text = text
host.CheckEqual clipboard.Text, text, "Unicode text comes back"
Outside "xclip -selection clipboard -o | od -An -tx1 >$file"
host.Check InStr(files.OpenTextFile(path).ReadAll, "f0 9f 98 80 ee 80 80 e4") > 0, "and is the same outside"
clipboard.Text = "" ' ends the program outside that offered it
host.Done
