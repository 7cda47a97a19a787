// A host script for `kelrun --host`. It adds the function dbar(PSI) to the script language, sets the
// variable psi from the command line, and logs each line that runs.
function evaluate(name, parameters) {
    if (name == "dbar") return (parameters(0) * 0.6894757).toFixed(3);
}
extender.SetHandlers(null, evaluate);   // directives, functions
extender.InstallFunction("dbar");
preprocessor.Variable("psi") = commandLine.Count > 0 ? commandLine.Item(0) : "0";

var lines = 0;
function onRunStarted() {
    dialogue.print("The line has " + link.Port.BaudRate + " baud");
}
function onLineStarted(file, line) {
    ++lines;
    dialogue.print("Line " + line);
}
function onError(file, line, column, message) {
    dialogue.print("Line " + line + " went wrong: " + message);
}
function onRunEnded(succeeded) {
    dialogue.print(lines + " lines ran" + (succeeded ? "" : ", the last one failed"));
}
