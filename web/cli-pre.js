// The command line under Node: the temporary file goes where TMPDIR says, as
// it does for the native program (the module has an environment of its own).
Module['preRun'] = Module['preRun'] || [];
Module['preRun'].push(function () {
  if (process.env['TMPDIR']) ENV['TMPDIR'] = process.env['TMPDIR'];
});
