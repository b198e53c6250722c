// Messages to the user. Everything goes through Mprintf, which writes to the
// screen (the standard error stream) and, with -l, the same bytes to the log.
#pragma once

#include <cstddef>
#include <cstdio>

#include "base/run_state.h"

namespace sorvel {

// One argument of Mprintf: an integer ("%d", "%c"), a real ("%f") or a string ("%s").
struct MsgArg {
  enum Kind { kInt, kReal, kText } kind;
  long i = 0;
  double f = 0.0;
  const char* s = "";
  MsgArg(int v) : kind(kInt), i(v) {}
  MsgArg(long v) : kind(kInt), i(v) {}
  MsgArg(unsigned v) : kind(kInt), i(static_cast<long>(v)) {}
  MsgArg(char v) : kind(kInt), i(v) {}
  MsgArg(float v) : kind(kReal), f(v) {}
  MsgArg(double v) : kind(kReal), f(v) {}
  MsgArg(const char* v) : kind(kText), s(v ? v : "") {}
};

void Mprintf_args(Run& run, const char* format, const MsgArg* args, size_t count);

// A reduced printf: only bare "%d" (as "%ld"), "%f" (as "%7.2f"), "%s" and "%c"
// convert; after any other character a "%" prints that character as it stands.
template <class... A>
void Mprintf(Run& run, const char* format, A... args) {
  const MsgArg list[] = {MsgArg(args)..., MsgArg(0)};
  Mprintf_args(run, format, list, sizeof...(A));
}

// Prints warning `number` with the line it was met on and a caret under `pos`.
// Nothing is printed under -s.
void warning_no(Run& run, int number, int line, const char* buffer, int pos);

// Prints error `number` (never silenced). kErrAlreadyPrinted (999) prints
// nothing; kErrCaretOnly (1000) prints the source line and caret only.
void error_no(Run& run, int number, int line, const char* buffer, int pos);

// Prints the line (newlines shown as "L") and a caret line under `pos`.
void put_buff(FILE* stream, const char* buffer, int pos);

}  // namespace sorvel
