var host = new ActiveXObject("QuillTest.Host");
var profile = new ActiveXObject("Quill.Profile");
var path = host.Folder() + "script.ini";

var caught = null;
try {
    profile.File = path;
} catch (error) {
    caught = error;
}
host.Check(caught !== null, "a missing file raises");
host.CheckError(caught.number, "", caught.description, 0x8004033F, "", "Profile not found: " + path);

new ActiveXObject("Scripting.FileSystemObject").CreateTextFile(path).Close();
profile.File = path;
host.CheckEqual(profile.SetValue("section", "key", "value"), true, "SetValue");
host.CheckEqual(profile.GetSection("section"), "key=value\r\n", "GetSection");
host.CheckEqual(profile.GetSection("section", false), "key=value\0", "GetSection, cvt false");
host.CheckEqual(profile.ErrorLevel, 1, "ErrorLevel");
host.Done();
