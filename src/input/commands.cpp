#include "input/commands.h"

#include "base/chars.h"

namespace sorvel {

namespace {

// The row of the name at pos, or null (the character after the end of the
// text is never read).
const CommandRow* row_at(const char* buffer, int pos) {
  if (buffer[pos] == '\0') return nullptr;
  return find_command(buffer[pos], buffer[pos + 1]);
}

// Whether the name at pos has one of the uses in `uses`.
int allowed(const char* buffer, int pos, unsigned uses) {
  const CommandRow* row = row_at(buffer, pos);
  return row && (row->use & uses) ? 1 : 0;
}

// Reads the digits after "re" or "bn"; all are read. Returns 0 when the number
// is above 7.
int read_size_digits(const char* buffer, int& pos, CommandExtras* extras) {
  if (!is_digit(buffer[pos])) return 1;
  int n = 0;
  while (is_digit(buffer[pos])) {
    if (n <= 7) n = n * 10 + (buffer[pos] - '0');
    ++pos;
  }
  if (n > 7) return 0;
  if (extras) extras->digits = n;
  return 1;
}

}  // namespace

int get_command(int& code, const char* buffer, int& pos, CommandExtras* extras) {
  const CommandRow* row = row_at(buffer, pos);
  if (!row) {
    // A known first letter with an unknown second: passed, the code unchanged.
    if (!is_command_letter(buffer[pos]) || buffer[pos + 1] == '\0') return 0;
    pos += 2;
    return 1;
  }
  code = row->code;
  if (row->use & kOneChar) {
    ++pos;
    return 1;
  }
  pos += 2;
  if (row->use & kDigits) return read_size_digits(buffer, pos, extras);
  if (row->use & kTakesX) {
    const int x = to_lower(buffer[pos]) == 'x';
    if (x) ++pos;
    if (extras) extras->nx = x;
  }
  return 1;
}

int is_command(const char* buffer, int pos) { return allowed(buffer, pos, kInputType | kDataList); }

int is_gcommand(const char* buffer, int pos) { return allowed(buffer, pos, kGblock); }

int is_out_type(const char* buffer, int pos) { return allowed(buffer, pos, kOutputType); }

int is_pfield(const char* buffer, int pos) {
  return buffer[pos] == 'p' && is_digit(buffer[pos + 1]) ? 1 : 0;
}

int is_input_code(int code) { return command_use(code) & kInputType ? 1 : 0; }

}  // namespace sorvel
