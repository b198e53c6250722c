// One file a run writes: the score or MIDI file, the log, the expansion file.
// Its bytes go to a new file beside its name; the name keeps the file it had
// until the new one is put in place, and a new file that is dropped leaves
// nothing behind. Where the system allows it, the new file has no name at all
// until it is put in place, so that not even a killed run leaves it behind.
//
// A name that is a symbolic link leads to the file it points to, which is the
// one replaced. A name that is not a regular file (a device, a pipe) is
// written directly, and so is a file in a directory where no new file can be
// made. The new file gets the old one's permissions.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace sorvel {

class NewFile {
 public:
  NewFile() = default;
  ~NewFile() { drop(); }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  // Makes the new file for `name`, to be written with the stdio `mode` ("w"
  // or "wb"). False when the name cannot be written, where opening it for
  // writing would fail. `plain`: the new file is named from the start, even
  // where it need not be.
  bool open(const char* name, const char* mode, bool plain = false);

  FILE* stream() const { return stream_; }
  bool is_open() const { return kind_ != kNone; }
  // Whether a write has failed so far.
  bool failed() const { return broken_ || (stream_ && std::ferror(stream_)); }

  // Flushes and closes the stream. False when a write, the flush or the
  // close failed.
  bool close();
  // Closes the stream and puts the new file in place of the name. False when
  // the file could not be put in place (a failed write alone does not stop
  // it: see close).
  bool put_in_place();
  // Closes and removes the new file; the name keeps what it had.
  void drop();

  // Whether the file with this device and inode is this one: the file the
  // name had, or the new one.
  bool is(uint64_t dev, uint64_t ino) const;

 private:
  enum Kind { kNone, kDirect, kAnonymous, kNamed };

  bool open_direct(const char* name, const char* mode);
  int make_beside(unsigned mode, bool plain, bool& refused);

  Kind kind_ = kNone;
  FILE* stream_ = nullptr;
  int fd_ = -1;           // kAnonymous: a descriptor kept to link the file in place
  std::string target_;    // the name with its links followed: what is replaced
  std::string new_name_;  // kNamed: the new file's name
  int slot_ = -1;         // kNamed: where that name is held for the signals
  bool existed_ = false;  // the target existed when the new file was made
  bool broken_ = false;   // a write, the flush or the close failed
  bool has_old_ = false, has_new_ = false;
  uint64_t old_dev_ = 0, old_ino_ = 0, new_dev_ = 0, new_ino_ = 0;
};

}  // namespace sorvel
