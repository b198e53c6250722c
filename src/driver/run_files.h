// The file layer of a run: every file it opens, writes, puts in place or
// removes goes through here (the input, the output, the expansion file, the
// temporary file, the log and the include files). The streams reach the rest
// of the run through the Run (fin, fout, fecho, fllog, ftmp); whatever can
// fail on them is checked here.
#pragma once

#include <string>

#include "base/run_state.h"
#include "driver/new_file.h"

namespace sorvel {

class RunFiles final : public IncludeOpener {
 public:
  explicit RunFiles(Run& run) : run_(run) {}
  ~RunFiles();
  RunFiles(const RunFiles&) = delete;
  RunFiles& operator=(const RunFiles&) = delete;

  // Opens the input, the output, the expansion file (-x), the temporary file
  // and the log (-l), in that order. At the first that cannot be opened,
  // prints its message and returns 1; 0 when all are open.
  int open_all();

  // After the include pass: the temporary file, every byte of it written,
  // becomes the input, read from its start. Returns 0, or error 9 when it
  // could not be written or wound back.
  int read_back();

  // Whether a read of the temporary file (the input, once read back) failed.
  bool read_failed() const;

  // Whether a write to the output, the expansion file or the log has failed.
  // The first time a file fails, "Can't write" is printed with its name.
  bool write_failed();

  // Ends the run's files: closes them all, puts the output in place when the
  // run succeeded (`ok`) and every file was written, drops it otherwise, and
  // puts the expansion file and the log in place either way. Returns false
  // (the message printed) when a file could not be written or put in place.
  bool finish(bool ok);

  // An include file, refused (nullptr) when it is a device or a pipe (which
  // could feed the copy without end, or never answer) or one of the files
  // this run writes.
  FILE* open_include(const char* name) override;

 private:
  enum Which { kOutput, kExpansion, kLog };

  void report(Which which);
  void close_input();

  Run& run_;
  NewFile out_, exp_, log_;
  std::string tmp_leftover_;  // the temporary file's name, where it could not be removed at once
  bool reported_[3] = {false, false, false};
  bool failed_ = false;
};

}  // namespace sorvel
