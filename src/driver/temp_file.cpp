#include "driver/temp_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "driver/pending.h"

#if defined(O_TMPFILE) && !defined(__EMSCRIPTEN__)
#define SORVEL_ANONYMOUS_FILES 1
#endif

namespace sorvel {

std::string temporary_directory(const std::string& dir) {
  if (!dir.empty()) return dir;
  const char* env = std::getenv("TMPDIR");
  return env && *env ? env : "/tmp";
}

FILE* open_temporary(const std::string& dir, std::string& leftover, bool plain) {
  leftover.clear();
  static_cast<void>(plain);  // no other way where there are no files without a name
  int fd = -1;
#ifdef SORVEL_ANONYMOUS_FILES
  if (!plain) fd = open(dir.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (!plain && fd < 0 && errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL) return nullptr;
#endif
  if (fd < 0) {
    const std::string templ = dir + "/sorvelXXXXXX";
    std::vector<char> name(templ.begin(), templ.end());
    name.push_back('\0');
    SignalsHeld held;
    fd = mkstemp(name.data());
    if (fd < 0) return nullptr;
    if (unlink(name.data()) != 0) leftover = name.data();
  }
  FILE* f = fdopen(fd, "w+");
  if (!f) {
    close(fd);
    if (!leftover.empty()) unlink(leftover.c_str());
    leftover.clear();
  }
  return f;
}

}  // namespace sorvel
