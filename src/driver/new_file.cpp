#include "driver/new_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "driver/pending.h"
#include "driver/places.h"

// A file without a name, given one later: Linux's O_TMPFILE and linkat.
// Elsewhere (and in the WebAssembly build, whose file systems have neither)
// the new file has a name from the start.
#if defined(O_TMPFILE) && defined(AT_EMPTY_PATH) && !defined(__EMSCRIPTEN__)
#define SORVEL_ANONYMOUS_FILES 1
#endif

namespace sorvel {

namespace {

constexpr size_t kLeafKept = 200;  // of the name, in the name of a new file beside it

// The name of a new file beside `target`, with `tail` after it.
std::string beside(const std::string& target, const std::string& tail) {
  std::string dir, leaf;
  split_path(target, dir, leaf);
  return dir + "/" + leaf.substr(0, kLeafKept) + tail;
}

// The permissions a new file would not get. The WebAssembly runtime starts
// with a mask of 0777, which would make every new score unreadable (and it
// does not apply the mask to new files anyway): there a new file gets the
// usual 0644.
unsigned creation_mask() {
#ifdef __EMSCRIPTEN__
  return 022;
#else
  const mode_t mask = umask(0);
  umask(mask);
  return static_cast<unsigned>(mask);
#endif
}

#ifdef SORVEL_ANONYMOUS_FILES

// Whether a file without a name can be given one later: either directly, or
// through its entry under /proc, which needs no privilege.
bool can_link_anonymous() { return access("/proc/self/fd", X_OK) == 0; }

int link_descriptor(int fd, const std::string& path) {
  if (linkat(fd, "", AT_FDCWD, path.c_str(), AT_EMPTY_PATH) == 0) return 0;
  if (errno != ENOENT && errno != EPERM) return -1;
  const std::string proc = "/proc/self/fd/" + std::to_string(fd);
  return linkat(AT_FDCWD, proc.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW);
}

// Gives the file open as `fd` the name `target`, replacing the file there.
bool link_in_place(int fd, const std::string& target, bool existed) {
  if (!existed) {
    if (link_descriptor(fd, target) == 0) return true;
    if (errno != EEXIST) return false;
  }
  // A name beside the target, then a rename over it: the name is there for
  // as long as the two calls take, with the signals held back.
  static unsigned serial = 0;
  for (int attempt = 0; attempt < 100; ++attempt) {
    const std::string name = beside(target, ".sorvel-" + std::to_string(getpid()) + "-" +
                                                std::to_string(++serial));
    if (link_descriptor(fd, name) != 0) {
      if (errno == EEXIST) continue;
      return false;
    }
    if (rename(name.c_str(), target.c_str()) == 0) return true;
    const int err = errno;
    unlink(name.c_str());
    errno = err;
    return false;
  }
  return false;
}

#endif

}  // namespace

bool NewFile::open_direct(const char* name, const char* mode) {
  stream_ = std::fopen(name, mode);
  if (!stream_) return false;
  kind_ = kDirect;
  struct stat st;
  if (fstat(fileno(stream_), &st) == 0) {
    has_new_ = true;
    new_dev_ = static_cast<uint64_t>(st.st_dev);
    new_ino_ = static_cast<uint64_t>(st.st_ino);
  }
  return true;
}

// Makes the new file beside target_ with permissions `mode`; returns its
// descriptor, or -1 with `refused` set when the directory does not take new
// files (so the file itself may still be written where it is).
int NewFile::make_beside(unsigned mode, bool plain, bool& refused) {
  refused = false;
  static_cast<void>(plain);  // no other way where there are no files without a name
  int fd = -1;
#ifdef SORVEL_ANONYMOUS_FILES
  if (!plain && can_link_anonymous()) {
    std::string dir, leaf;
    split_path(target_, dir, leaf);
    fd = ::open(dir.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
    if (fd >= 0) {
      kind_ = kAnonymous;
    } else if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL) {
      refused = errno == EACCES || errno == EPERM || errno == EROFS;
      return -1;
    }
  }
#endif
  if (fd < 0) {
    const std::string templ = beside(target_, ".sorvel-XXXXXX");
    std::vector<char> name(templ.begin(), templ.end());
    name.push_back('\0');
    SignalsHeld held;
    fd = mkstemp(name.data());
    if (fd < 0) {
      refused = errno == EACCES || errno == EPERM || errno == EROFS;
      return -1;
    }
    kind_ = kNamed;
    new_name_ = name.data();
    slot_ = hold_name(new_name_.c_str());
  }
  if (kind_ == kNamed || existed_) fchmod(fd, static_cast<mode_t>(mode));
  return fd;
}

bool NewFile::open(const char* name, const char* mode, bool plain) {
  drop();
  broken_ = has_old_ = has_new_ = false;
  const Place place = find_place(name);
  // A name that leads nowhere that can be told, or to something that is not
  // a regular file, is opened as it stands (and fails as it would).
  if (!place.known || (place.exists && !place.regular)) return open_direct(name, mode);

  target_ = place.path;
  existed_ = place.exists;
  struct stat old {};
  unsigned perms = 0666 & ~creation_mask();
  if (existed_) {
    if (access(target_.c_str(), W_OK) != 0 || stat(target_.c_str(), &old) != 0) return false;
    has_old_ = true;
    old_dev_ = static_cast<uint64_t>(old.st_dev);
    old_ino_ = static_cast<uint64_t>(old.st_ino);
    perms = static_cast<unsigned>(old.st_mode & 07777);
  }
  bool refused = false;
  const int fd = make_beside(perms, plain, refused);
  if (fd < 0) {
    // A directory that takes no new files: the file is written where it is.
    if (existed_ && refused) return open_direct(target_.c_str(), mode);
    return false;
  }
  struct stat st;
  if (fstat(fd, &st) == 0) {
    if (existed_ && (st.st_uid != old.st_uid || st.st_gid != old.st_gid)) {
      // Keep the owner where the system lets us; the permissions again after
      // (a change of owner can clear some of them).
      if (fchown(fd, old.st_uid, old.st_gid) == 0) fchmod(fd, static_cast<mode_t>(perms));
    }
    has_new_ = true;
    new_dev_ = static_cast<uint64_t>(st.st_dev);
    new_ino_ = static_cast<uint64_t>(st.st_ino);
  }
  if (kind_ == kAnonymous) fd_ = fcntl(fd, F_DUPFD_CLOEXEC, 0);
  stream_ = fdopen(fd, mode);
  if (!stream_ || (kind_ == kAnonymous && fd_ < 0)) {
    const int err = errno;
    if (!stream_) ::close(fd);
    drop();
    errno = err;
    return false;
  }
  return true;
}

bool NewFile::close() {
  if (stream_) {
    if (std::fflush(stream_) != 0 || std::ferror(stream_)) broken_ = true;
    if (std::fclose(stream_) != 0) broken_ = true;
    stream_ = nullptr;
  }
  return !broken_;
}

bool NewFile::put_in_place() {
  close();
  bool placed = true;
  switch (kind_) {
    case kNone:
    case kDirect:
      break;
    case kNamed: {
      SignalsHeld held;
      placed = rename(new_name_.c_str(), target_.c_str()) == 0;
      if (!placed) unlink(new_name_.c_str());
      release_name(slot_);
      slot_ = -1;
      break;
    }
    case kAnonymous: {
#ifdef SORVEL_ANONYMOUS_FILES
      SignalsHeld held;
      placed = link_in_place(fd_, target_, existed_);
#endif
      ::close(fd_);
      fd_ = -1;
      break;
    }
  }
  kind_ = kNone;
  return placed;
}

void NewFile::drop() {
  if (stream_) std::fclose(stream_);
  stream_ = nullptr;
  if (kind_ == kNamed) {
    SignalsHeld held;
    unlink(new_name_.c_str());
    release_name(slot_);
    slot_ = -1;
  }
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
  kind_ = kNone;
}

bool NewFile::is(uint64_t dev, uint64_t ino) const {
  return (has_old_ && dev == old_dev_ && ino == old_ino_) ||
         (has_new_ && dev == new_dev_ && ino == new_ino_);
}

}  // namespace sorvel
