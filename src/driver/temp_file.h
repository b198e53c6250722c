// The temporary file of the include pass: made in a directory of its own
// choosing, removed from that directory as soon as it is made, written and
// then read back through the one stream, so that nothing is ever reopened by
// name and no way of ending a run leaves it behind.
#pragma once

#include <cstdio>
#include <string>

namespace sorvel {

// The directory for the temporary file: `dir` when it is given, else the one
// TMPDIR names, else /tmp.
std::string temporary_directory(const std::string& dir);

// Makes the file in `dir` and returns it open for writing and reading, or
// nullptr. Where the system cannot remove an open file's name, the name is
// left in `leftover`, to be removed when the run ends. `plain`: made with a
// name and then removed, even where it could be made without one.
FILE* open_temporary(const std::string& dir, std::string& leftover, bool plain = false);

}  // namespace sorvel
