#include "input/commands.h"

#include <cstring>

#include "base/chars.h"

namespace sorvel {

namespace {

// Whether the lowered two characters at pos are one of the names in `list`
// (pairs of letters, blank-separated).
bool name_in(const char* buffer, int pos, const char* list) {
  int a = to_lower(buffer[pos]);
  if (a == '\0') return false;
  int b = to_lower(buffer[pos + 1]);
  for (const char* p = list; p[0] && p[1]; p += 3) {
    if (p[0] == a && p[1] == b) return true;
    if (p[2] == '\0') break;
  }
  return false;
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
  const int a = to_lower(buffer[pos]);
  if (a == '#' || a == '$') {
    code = to_lower(buffer[pos + 1]) == 'c' ? CMD_CONST : CMD_MACRO;
    ++pos;
    return 1;
  }
  if (a == '>') {
    code = CMD_DIRECT;
    ++pos;
    return 1;
  }
  if (!std::strchr("bdehimnoprstx", a) || a == '\0') return 0;
  const int b = to_lower(buffer[pos + 1]);
  if (b == '\0') return 0;
  pos += 2;
  switch (a) {
    case 'b':
      if (b == 'n') {
        code = CMD_BN;
        return read_size_digits(buffer, pos, extras);
      }
      break;
    case 'd':
      if (b == 'b') code = CMD_DB;
      else if (b == 'v') code = CMD_DV;
      break;
    case 'e':
      if (b == 'x') code = CMD_EX;
      break;
    case 'h':
      if (b == 'z') code = CMD_HZ;
      else if (b == 'o') code = CMD_HO;
      break;
    case 'i':
      if (b == 'n') code = CMD_IN;
      break;
    case 'm':
      if (b == 'o') code = CMD_MO;
      else if (b == 's') code = CMD_MS;
      break;
    case 'n':
    case 'o':
      if (a == 'o' && b == 'd') {
        code = CMD_OD;
      } else if ((a == 'n' && b == 'o') || (a == 'o' && b == 'p')) {
        code = a == 'n' ? CMD_NO : CMD_OP;
        int x = to_lower(buffer[pos]) == 'x';
        if (x) ++pos;
        if (extras) extras->nx = x;
      }
      break;
    case 'p':
      if (b == 'f') code = CMD_PF;
      break;
    case 'r':
      if (b == 'e') {
        code = CMD_RE;
        return read_size_digits(buffer, pos, extras);
      }
      if (b == 'h') code = CMD_RH;
      else if (b == 'a') code = CMD_RA;
      else if (b == 'd') code = CMD_RD;
      else if (b == 's') code = CMD_RS;
      else if (b == 'w') code = CMD_RW;
      break;
    case 's':
      if (b == 'e') code = CMD_SE;
      else if (b == '2') code = CMD_S2;
      else if (b == 'r') code = CMD_SR;
      break;
    case 't':
      if (b == 'e') code = CMD_TE;
      else if (b == 'r') code = CMD_TR;
      break;
    case 'x':
      if (b == 'x') code = CMD_XX;
      break;
  }
  return 1;
}

int is_command(const char* buffer, int pos) {
  if (buffer[pos] == '#') return 1;
  return name_in(buffer, pos, "db dv ex ho in ms mo no op pf ra rd re rh rs rw s2 se") ? 1 : 0;
}

int is_gcommand(const char* buffer, int pos) {
  if (buffer[pos] == '#' || buffer[pos] == '>') return 1;
  return name_in(buffer, pos, "pf rd rs sr te") ? 1 : 0;
}

int is_pfield(const char* buffer, int pos) {
  return buffer[pos] == 'p' && is_digit(buffer[pos + 1]) ? 1 : 0;
}

int is_out_type(const char* buffer, int pos) {
  return name_in(buffer, pos, "re in db hz op od tr bn xx") ? 1 : 0;
}

int is_input_code(int code) {
  switch (code) {
    case CMD_DB: case CMD_IN: case CMD_NO: case CMD_OP: case CMD_OD: case CMD_RE: case CMD_RH:
      return 1;
    default:
      return 0;
  }
}


}  // namespace sorvel
