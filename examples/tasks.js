// A small list of tasks, kept in a text file: shows them with Quill.List, and takes those that the
// user chooses as done from the file.
// Run it with:  cscript //nologo tasks.js [tasks.txt]

var files = new ActiveXObject("Scripting.FileSystemObject");
var path = WScript.Arguments.length > 0
    ? WScript.Arguments(0)
    : new ActiveXObject("WScript.Shell").ExpandEnvironmentStrings("%TEMP%\\quill-tasks.txt");

if (!files.FileExists(path))
    write("Water the plants\r\nCall the garage\r\nBack up the photos\r\nPay the rent\r\n");

var tasks = read();
var list = new ActiveXObject("Quill.List");
list.MultiSel = true;     // Shift, Ctrl and the mouse choose several lines
list.DlgCancelEsc = true; // Esc leaves everything as it is
list.ButtonText = "Done";
list.Info = "Which of these are done?";
var done = list.Selection(tasks, -1, "Tasks"); // -1: nothing is chosen at first

// Every line that came back ends in a line break, so the lines of the file are found in it whole.
var left = "";
var lines = tasks.split("\r\n");
for (var i = 0; i < lines.length; i++)
    if (lines[i] !== "" && ("\r\n" + done).indexOf("\r\n" + lines[i] + "\r\n") < 0)
        left += lines[i] + "\r\n";
write(left);

WScript.Echo("Done:\r\n" + done);
WScript.Echo("Left:\r\n" + left);
WScript.Echo("Tasks are in " + path);

function read() {
    if (files.GetFile(path).Size === 0) return "";
    var stream = files.OpenTextFile(path, 1);
    var text = stream.ReadAll();
    stream.Close();
    return text;
}

function write(text) {
    var stream = files.CreateTextFile(path, true);
    stream.Write(text);
    stream.Close();
}
