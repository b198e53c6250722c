#include "base/diag.h"

#include <string>

#include "base/catalog.h"
#include "base/observer.h"
#include "base/numtext.h"

namespace sorvel {

namespace {

void emit(Run& run, const std::string& text) {
  if (text.empty()) return;
  std::fwrite(text.data(), 1, text.size(), run.screen);
  if (run.MKLOG && run.fllog) std::fwrite(text.data(), 1, text.size(), run.fllog);
}

void put_buff_both(Run& run, const char* buffer, int pos) {
  put_buff(run.screen, buffer, pos);
  if (run.MKLOG && run.fllog) put_buff(run.fllog, buffer, pos);
}

}  // namespace

void Mprintf_args(Run& run, const char* format, const MsgArg* args, size_t count) {
  std::string out;
  size_t next = 0;
  auto take = [&]() -> const MsgArg* { return next < count ? &args[next++] : nullptr; };
  for (const char* p = format; *p; ++p) {
    if (*p != '%') {
      out += *p;
      continue;
    }
    ++p;
    if (*p == '\0') break;
    const MsgArg* a = nullptr;
    switch (*p) {
      case 'd':
        a = take();
        append_long(out, a ? (a->kind == MsgArg::kReal ? static_cast<long>(a->f) : a->i) : 0);
        break;
      case 'f':
        a = take();
        append_fixed(out, a ? (a->kind == MsgArg::kReal ? a->f : static_cast<double>(a->i)) : 0.0,
                     7, 2);
        break;
      case 's':
        a = take();
        if (a && a->kind == MsgArg::kText) out += a->s;
        break;
      case 'c':
        a = take();
        out += static_cast<char>(a ? a->i : 0);
        break;
      default:
        out += *p;
        break;
    }
  }
  emit(run, out);
}

void put_buff(FILE* stream, const char* buffer, int pos) {
  std::string out;
  int n = 0;
  for (; buffer[n]; ++n) out += buffer[n] == '\n' ? 'L' : buffer[n];
  out += '\n';
  for (int i = 0; i < n && i <= pos; ++i) {
    if (i < pos)
      out += buffer[i] == '\t' ? '\t' : ' ';
    else
      out += '^';
  }
  out += '\n';
  std::fwrite(out.data(), 1, out.size(), stream);
}

void warning_no(Run& run, int number, int line, const char* buffer, int pos) {
  const char* text = warning_text(number);
  if (run.observer) run.observer->warning(number, number <= 9 ? 0 : line, buffer, pos);
  if (run.SUPRESS) return;
  if (number <= 9) {
    Mprintf(run, "\nWARNING: %s", text);
    return;
  }
  Mprintf(run, "\n\nWARNING: Line %d: ", line);
  Mprintf(run, "%s\n", text);
  put_buff_both(run, buffer, pos);
}

void error_no(Run& run, int number, int line, const char* buffer, int pos) {
  if (run.observer) run.observer->error(number, line, buffer, pos);
  if (number == kErrAlreadyPrinted) return;
  if (number == kErrCaretOnly) {
    put_buff_both(run, buffer, pos);
    return;
  }
  const char* text = error_text(number);
  bool short_form = number == kErrCommentsMismatched || number == kErrPfieldsMismatchHeader ||
                    number == kErrEofBeforeBrace || number == kErrEofInMacroBody ||
                    number == kErrTempFile || (!is_catalogued_error(number) && number <= 9);
  if (short_form) {
    Mprintf(run, "\nERROR: %s\n\n", text);
    return;
  }
  Mprintf(run, "\n\nERROR: Line %d: ", line);
  Mprintf(run, "%s\n", text);
  put_buff_both(run, buffer, pos);
}

}  // namespace sorvel
