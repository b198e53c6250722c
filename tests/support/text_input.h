// A run reading from a string, with its messages caught in memory.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "base/run_state.h"
#include "input/source.h"

namespace sorvel::testing {

class TextInput {
 public:
  explicit TextInput(std::string text)
      : text_(std::move(text)),
        in_(fmemopen(text_.data(), text_.size(), "r")),
        src(run, in_) {
    run.screen = open_memstream(&msg_buf_, &msg_len_);
  }
  TextInput(const TextInput&) = delete;
  TextInput& operator=(const TextInput&) = delete;
  ~TextInput() {
    std::fclose(in_);
    std::fclose(run.screen);
    std::free(msg_buf_);
  }

  // Everything printed to the screen so far.
  std::string messages() {
    std::fflush(run.screen);
    return std::string(msg_buf_, msg_len_);
  }

  // Reads the first line and places the position at `pos`.
  void read_line(int pos = 0) {
    src.get_buff();
    src.pos = pos;
  }

  Run run;

 private:
  std::string text_;
  FILE* in_;
  char* msg_buf_ = nullptr;
  size_t msg_len_ = 0;

 public:
  Source src;
};

// An output file kept in memory.
class MemoryFile {
 public:
  MemoryFile() : file(open_memstream(&buf_, &len_)) {}
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() {
    std::fclose(file);
    std::free(buf_);
  }
  std::string text() {
    std::fflush(file);
    return std::string(buf_, len_);
  }

 private:
  char* buf_ = nullptr;
  size_t len_ = 0;

 public:
  FILE* file;
};

}  // namespace sorvel::testing
