// What members.txt needs: "play" evaluates an expression on the object "o", which "maker" makes, and
// prints what that gives.
var o;
function make(name) { return new ActiveXObject("KelUtils." + name); }
function link() { return new ActiveXObject("BenchLink.Communicator"); }
function file(text, isWide) {
    var files = new ActiveXObject("Scripting.FileSystemObject");
    var path = files.GetSpecialFolder(2) + "\\kel_automation.js";
    var stream = files.CreateTextFile(path, true, isWide == true);
    stream.Write(text);
    stream.Close();
    return path;
}
function table() {
    var made = make("KelObjects");
    for (var i = 0; i < arguments.length; ++i) made.Item(arguments[i]) = make("KelObjects");
    return made;
}
function walk(collection, what) {
    var texts = [];
    for (var each = new Enumerator(collection); !each.atEnd(); each.moveNext())
        texts.push(what(each.item()));
    return texts.join(" ");
}
function show(value) {
    if (value === null) return "nothing";
    return typeof value == "object" ? "an object" : String(value);
}
function play(expression) {
    var shown;
    try { o = eval(maker); shown = show(eval(expression)); }
    catch (error) { shown = "fails: " + error.message; }
    WScript.Echo(shown);
}
