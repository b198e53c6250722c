#include "driver/run_files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "base/catalog.h"
#include "base/diag.h"
#include "driver/temp_file.h"

namespace sorvel {

namespace {

FILE* open_named(Run& run, const char* name, const char* mode) {
  FILE* f = std::fopen(name, mode);
  if (!f) std::fprintf(run.screen, "\nERROR: Can't open \"%s\".\n\n", name);
  return f;
}

bool open_new(Run& run, NewFile& file, const char* name, const char* mode, FILE*& stream) {
  if (!file.open(name, mode, run.plain_files)) {
    std::fprintf(run.screen, "\nERROR: Can't open \"%s\".\n\n", name);
    return false;
  }
  stream = file.stream();
  return true;
}

bool includable(const struct stat& st) { return S_ISREG(st.st_mode) || S_ISDIR(st.st_mode); }

}  // namespace

RunFiles::~RunFiles() {
  close_input();
  // Whatever was not finished is dropped by the files themselves.
  run_.fout = run_.fecho = run_.fllog = nullptr;
}

int RunFiles::open_all() {
  if (!(run_.fin = open_named(run_, run_.in_fname, "r"))) return 1;
  if (!open_new(run_, out_, run_.out_fname, run_.MKMIDI ? "wb" : "w", run_.fout)) return 1;
  if (run_.MKEXP && !open_new(run_, exp_, run_.exp_fname, "w", run_.fecho)) return 1;
  run_.ftmp = open_temporary(temporary_directory(run_.tmp_dir), tmp_leftover_, run_.plain_files);
  if (!run_.ftmp) {
    std::fputs("\nERROR: Can't open temporary file\n\n", run_.screen);
    return 1;
  }
  if (run_.MKLOG && !open_new(run_, log_, run_.log_fname, "w", run_.fllog)) return 1;
  return 0;
}

int RunFiles::read_back() {
  FILE* tmp = run_.ftmp;
  const bool written = std::fflush(tmp) == 0 && !std::ferror(tmp);
  const bool wound = written && std::fseek(tmp, 0L, SEEK_SET) == 0;
  if (run_.fin) std::fclose(run_.fin);
  run_.fin = tmp;
  run_.ftmp = nullptr;
  return wound ? kOk : kErrTempFile;
}

bool RunFiles::read_failed() const { return run_.fin && std::ferror(run_.fin); }

void RunFiles::report(Which which) {
  failed_ = true;
  if (reported_[which]) return;
  reported_[which] = true;
  // A log that cannot be written is not written to again.
  if (which == kLog) run_.fllog = nullptr;
  const char* name = which == kOutput ? run_.out_fname
                     : which == kExpansion ? run_.exp_fname
                                           : run_.log_fname;
  Mprintf(run_, "\nERROR: Can't write \"%s\".\n\n", name);
}

bool RunFiles::write_failed() {
  if (log_.failed()) report(kLog);
  if (out_.failed()) report(kOutput);
  if (exp_.failed()) report(kExpansion);
  return failed_;
}

void RunFiles::close_input() {
  if (run_.fin) std::fclose(run_.fin);
  if (run_.ftmp) std::fclose(run_.ftmp);
  run_.fin = run_.ftmp = nullptr;
  if (!tmp_leftover_.empty()) unlink(tmp_leftover_.c_str());
  tmp_leftover_.clear();
}

bool RunFiles::finish(bool ok) {
  close_input();
  if (log_.failed()) report(kLog);
  // The output's last bytes; a run that failed already does not need them.
  if (ok && out_.is_open() && !out_.close()) report(kOutput);
  if (exp_.is_open() && !exp_.close()) report(kExpansion);
  if (log_.is_open() && (std::fflush(log_.stream()) != 0 || log_.failed())) report(kLog);
  if (out_.is_open()) {
    if (ok && !failed_) {
      if (!out_.put_in_place()) report(kOutput);
    } else {
      out_.drop();
    }
  }
  run_.fout = nullptr;
  if (exp_.is_open() && !exp_.put_in_place()) report(kExpansion);
  run_.fecho = nullptr;
  if (log_.is_open()) {
    run_.fllog = nullptr;
    const bool closed = log_.close();
    const bool placed = log_.put_in_place();
    if (!closed || !placed) report(kLog);
  }
  return ok && !failed_;
}

FILE* RunFiles::open_include(const char* name) {
  struct stat st;
  if (stat(name, &st) == 0 && !includable(st)) return nullptr;
  FILE* f = std::fopen(name, "r");
  if (!f) return nullptr;
  if (fstat(fileno(f), &st) == 0) {
    const auto dev = static_cast<uint64_t>(st.st_dev), ino = static_cast<uint64_t>(st.st_ino);
    if (!includable(st) || out_.is(dev, ino) || exp_.is(dev, ino) || log_.is(dev, ino)) {
      std::fclose(f);
      return nullptr;
    }
  }
  return f;
}

}  // namespace sorvel
