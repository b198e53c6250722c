// A stream whose bytes the test can read back: stands in for the screen, the
// console, the log or the expansion file of a run.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace sorvel::testing {

class Capture {
  char* data_ = nullptr;
  size_t size_ = 0;

 public:
  Capture() : f(open_memstream(&data_, &size_)) {}
  ~Capture() {
    std::fclose(f);
    std::free(data_);
  }
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;

  // Everything written so far.
  std::string text() {
    std::fflush(f);
    return std::string(data_, size_);
  }

  FILE* const f;
};

}  // namespace sorvel::testing
