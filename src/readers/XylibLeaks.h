// When a read throws, xylib leaves its data set half built: deleting it can free a block twice
// (found by fuzzing UXD), so xylib's load functions drop it, a few hundred bytes per refused
// file that no caller can free. The leak checker of the sanitizer builds is told to pass over
// allocations made in xylib, and only those.
#pragma once

/// Include in exactly one source file of a program that reads through xylib under a sanitizer.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libxy.so\n";
}
