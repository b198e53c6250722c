#include "driver/places.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace sorvel {

namespace {

constexpr int kMaxLinks = 40;       // links followed in one name, as the system does
constexpr size_t kLinkText = 4096;  // longest link text read

void set_identity(Place& p, const struct stat& st) {
  p.dev = static_cast<uint64_t>(st.st_dev);
  p.ino = static_cast<uint64_t>(st.st_ino);
}

}  // namespace

void split_path(const std::string& path, std::string& dir, std::string& leaf) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) {
    dir.assign(1, '.');  // (assigning a literal here draws a false -Wrestrict from g++ 12 at -O3)
    leaf = path;
  } else {
    dir = slash == 0 ? std::string(1, '/') : path.substr(0, slash);
    leaf = path.substr(slash + 1);
  }
}

bool follow_links(const char* name, std::string& path) {
  path = name;
  for (int hops = 0; hops <= kMaxLinks; ++hops) {
    // The links of /proc name open descriptors, not paths: they stay as they are.
    if (path.rfind("/proc/", 0) == 0) return true;
    struct stat st;
    if (lstat(path.c_str(), &st) != 0 || !S_ISLNK(st.st_mode)) return true;
    if (hops == kMaxLinks) break;
    char text[kLinkText];
    const ssize_t n = readlink(path.c_str(), text, sizeof text);
    if (n <= 0 || static_cast<size_t>(n) >= sizeof text) return false;
    const std::string target(text, static_cast<size_t>(n));
    if (target[0] == '/' || path.find('/') == std::string::npos) {
      path = target;
    } else {
      std::string dir, leaf;
      split_path(path, dir, leaf);
      path = dir + "/" + target;
    }
  }
  return false;
}

Place find_place(const char* name) {
  Place p;
  if (!follow_links(name, p.path)) return p;
  // The descriptors of a process (where /dev/stdout leads) are not files
  // that a name can be given to: they are written as they stand.
  if (p.path.rfind("/proc/", 0) == 0) return p;
  std::string dir;
  split_path(p.path, dir, p.leaf);
  struct stat st;
  if (stat(p.path.c_str(), &st) == 0) {
    p.known = p.exists = true;
    p.regular = S_ISREG(st.st_mode);
    set_identity(p, st);
    return p;
  }
  if (p.leaf.empty() || p.leaf == "." || p.leaf == "..") return p;
  if (stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return p;
  p.known = true;
  set_identity(p, st);
  return p;
}

bool same_file(const char* a, const char* b) {
  if (std::strcmp(a, b) == 0) return true;
  const Place pa = find_place(a), pb = find_place(b);
  if (!pa.known || !pb.known || pa.exists != pb.exists) return false;
  if (pa.dev != pb.dev || pa.ino != pb.ino) return false;
  return pa.exists || pa.leaf == pb.leaf;
}

}  // namespace sorvel
