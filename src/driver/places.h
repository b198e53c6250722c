// Where a file name leads: the file that writing the name would write, with
// every symbolic link on the way followed, and that file's identity. Two
// names lead to one place when they name one existing file (device and
// inode), or when neither file exists yet and both would be made under one
// name in one directory.
#pragma once

#include <cstdint>
#include <string>

namespace sorvel {

struct Place {
  std::string path;     // the name with its symbolic links followed
  bool known = false;   // false: a loop of links, a missing directory, a name like ".",
                        // a link into /proc (such as /dev/stdout)
  bool exists = false;  // the file exists (dev and ino are its own)
  bool regular = false; // ... and is a regular file
  // The file's identity, or, when it does not exist, its directory's.
  uint64_t dev = 0, ino = 0;
  std::string leaf;  // the last component of path
};

// The name with its symbolic links followed (at most 40 of them; false for
// more, or when a link cannot be read). A path into /proc is not followed.
bool follow_links(const char* name, std::string& path);

// The directory part of a path ("." when it has none) and its last component.
void split_path(const std::string& path, std::string& dir, std::string& leaf);

Place find_place(const char* name);

// Whether two names are one file: equal names, or names that lead to one place.
bool same_file(const char* a, const char* b);

}  // namespace sorvel
