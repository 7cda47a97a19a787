// A script client, as the script host of Windows runs it: are the components registered?
try {
    var preprocessor = new ActiveXObject("KelUtils.Preprocessor");
    preprocessor.PreprocessAndRun("@depth=\"12\"");
    WScript.Echo("depth: " + preprocessor.Variable("depth"));
    WScript.Quit(preprocessor.Variable("depth") == "12" ? 0 : 1);
} catch (error) {
    WScript.Echo(error.description);
    WScript.Quit(1);
}
