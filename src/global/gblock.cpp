#include "global/gblock.h"

#include <cstring>

#include "base/catalog.h"
#include "base/chars.h"
#include "global/settings.h"
#include "global/tempo.h"
#include "input/commands.h"
#include "input/preproc.h"

namespace sorvel {

namespace {

enum class LineEnd { kNextLine, kBlockEnd };

// Scans the rest of a line character by character once no command stands at
// the position: blanks and comments are skipped, "i" ends the block, and
// anything else is error 22. A comment does not lead back to commands, so a
// command after a comment on the same line is refused too. A comment being
// skipped reads further lines; an error met in one of them (an unknown
// constant there, say) is passed up as it is, and only the end of the input
// inside the comment is error 3.
int scan_chars(Source& src, LineEnd& end) {
  for (;;) {
    const int c = src.cur();
    if (c == '\0') {
      end = LineEnd::kNextLine;
      return kOk;
    }
    if (c == 'i') {
      end = LineEnd::kBlockEnd;
      return kOk;
    }
    if (is_space(c)) {
      ++src.pos;
      continue;
    }
    int kind = 0;
    if (src.is_comment(kind)) {
      if (int r = src.skip_comment(kind)) return r == kEndOfInput ? kErrCommentsMismatched : r;
      continue;
    }
    return kErrBadGblockCommand;
  }
}

}  // namespace

int parse_gblock(Source& src, FILE* output) {
  for (;;) {
    int r = src.get_buff();
    if (r) return r;
    while (!src.at_line_end()) {
      src.skip_blanks();
      if (is_gcommand(src.buffer, src.pos) && !src.at_line_end()) {
        int code = -1;
        if (!get_command(code, src.buffer, src.pos)) return kErrBadGblockCommand;
        r = do_gcommand(code, src, output);
        if (r > 0) return r;
        continue;
      }
      LineEnd end = LineEnd::kNextLine;
      r = scan_chars(src, end);
      if (r) return r;
      if (end == LineEnd::kBlockEnd) {
        if (src.run.SHOW_TEMPOS) print_tempos(src.run);
        return kOk;
      }
      break;
    }
  }
}

int do_gcommand(int code, Source& src, FILE* output) {
  switch (code) {
    case CMD_TE: return get_tempo_change(src);
    case CMD_RD: return set_rand_dev(src);
    case CMD_RS: return set_rand_seed(src);
    case CMD_DIRECT: do_direct_out(src, output); return kOk;
    case CMD_MACRO: return parse_macro(src);
    case CMD_CONST: return parse_var(src);
    case CMD_SR: return set_samp_rate(src);
    default: return kErrBadGblockData;
  }
}

void do_direct_out(Source& src, FILE* output) {
  const size_t rest = std::strlen(src.buffer + src.pos);
  if (!src.run.MKMIDI && output) {
    std::fputc('\n', output);
    std::fwrite(src.buffer + src.pos, 1, rest, output);
  }
  src.pos += static_cast<int>(rest);
}

}  // namespace sorvel
