// The registered Preprocessor as a script client meets it.
function check(what, got, wanted) {
    if (got !== wanted) throw new Error(what + " gave " + got);
}

function fails(what, call) {
    var failed = false;
    try { call(); } catch (error) { failed = true; }
    check(what, failed, true);
}

try {
    var preprocessor = new ActiveXObject("KelUtils.Preprocessor");
    check("progid with version", typeof new ActiveXObject("KelUtils.Preprocessor.1"), "object");

    check("running", preprocessor.Running, false);
    preprocessor.Cancel();
    check("cancelled when idle", preprocessor.Cancelled, false);

    check("assignment", preprocessor.PreprocessAndRun("@a=\"x\"\n#WAIT 0\n@d=DATE()"), true);
    check("variables", preprocessor.PreprocessAndRun("#IF A == \"X\"\n#ELSE\nwrong\n#ENDIF"), true);
    preprocessor.Variable("a");
    check("a line without a link", preprocessor.PreprocessAndRun("line"), false);
    check("a syntax error", preprocessor.preprocessandrun("#IF"), false);

    preprocessor.Communicator = null;
    check("communicator", preprocessor.Communicator, null);
    preprocessor.ScriptPath = "C:\\scripts";
    check("text property", preprocessor.ScriptPath, "C:\\scripts");
    preprocessor.ParentWindow = "12";
    check("number property", preprocessor.ParentWindow, 12);

    fails("an object that is no link", function () { preprocessor.Communicator = preprocessor; });
    fails("a missing argument", function () { preprocessor.PreprocessAndRun(); });
    fails("a surplus argument", function () { preprocessor.PreprocessAndRun("", 1); });
    fails("an unknown member", function () { preprocessor.Explode(); });
    fails("no handler", function () { preprocessor.InstallCustomDirective("X", null, 1); });
} catch (error) {
    WScript.Echo(error.message);
    WScript.Quit(1);
}
WScript.Quit(0);
