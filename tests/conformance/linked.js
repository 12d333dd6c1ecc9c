// SPDX-License-Identifier: MIT
// The folder that takes the diagnostic file, and the arguments where nobody gives any.
Module.preRun = [].concat(Module.preRun ?? [], () => FS.mkdir("/outputImg"));
Module.arguments = ["linked", "/expected.txt"];
