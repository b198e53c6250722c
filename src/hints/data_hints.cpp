#include "hints/data_hints.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "base/catalog.h"
#include "base/chars.h"
#include "base/vocabulary.h"
#include "hints/text.h"

namespace sorvel {

namespace {

// A whole number as written: digits, with an optional sign.
bool is_whole(const char* text, int begin, int end) {
  if (begin < end && (text[begin] == '+' || text[begin] == '-')) ++begin;
  if (begin == end) return false;
  for (int i = begin; i < end; ++i)
    if (!is_digit(text[i])) return false;
  return true;
}

// "%.*f" without the zeros at the end (and without a point left bare).
std::string decimal(double v, int decimals) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
  std::string s = buf;
  if (s.find('.') != std::string::npos) {
    while (s.back() == '0') s.pop_back();
    if (s.back() == '.') s.pop_back();
  }
  return s;
}

// The fewest decimals (up to 6) that write every weight exactly.
int decimals_of(const float* w, int n) {
  for (int d = 0; d < 6; ++d) {
    const double scale = std::pow(10.0, d);
    bool exact = true;
    for (int k = 0; k < n && exact; ++k) {
      const double x = static_cast<double>(w[k]) * scale;
      exact = std::fabs(x - std::nearbyint(x)) < 1e-3;
    }
    if (exact) return d;
  }
  return 6;
}

// Weights scaled to add up to 1, each rounded to `decimals` (one more at a
// time until no positive weight becomes 0), the remainder on the last.
// Empty when no such version is found.
std::vector<long long> scaled(const float* w, int n, float sum, int& decimals) {
  for (int d = decimals < 1 ? 1 : decimals; d <= 6; ++d) {
    const long long whole = std::llround(std::pow(10.0, d));
    std::vector<long long> units;
    long long used = 0;
    bool ok = true;
    for (int k = 0; k + 1 < n && ok; ++k) {
      const double share = static_cast<double>(w[k]) / static_cast<double>(sum);
      const long long u = std::llround(share * static_cast<double>(whole));
      ok = w[k] == 0.0f || u > 0;
      units.push_back(u);
      used += u;
    }
    const long long last = whole - used;
    if (!ok || last < 0 || (last == 0 && w[n - 1] != 0.0f)) continue;
    units.push_back(last);
    decimals = d;
    return units;
  }
  return {};
}

// A weight written as the composer writes them: ".5" or "0.5".
std::string weight_text(long long units, int decimals, bool bare_point) {
  std::string s = decimal(static_cast<double>(units) / std::pow(10.0, decimals), decimals);
  if (bare_point && s.size() > 1 && s[0] == '0' && s[1] == '.') s.erase(0, 1);
  return s;
}

// An i-block header at `pos`: "i", the instrument number, "=".
bool is_header(const char* text, int pos) {
  if (text[pos] != 'i') return false;
  int i = pos + 1;
  while (text[i] == ' ' || text[i] == '\t') ++i;
  if (text[i] == '-') ++i;
  if (!is_digit(text[i])) return false;
  while (is_digit(text[i])) ++i;
  while (text[i] == ' ' || text[i] == '\t') ++i;
  return text[i] == '=';
}

}  // namespace

void DataHints::file_lines(int run_line, const char* file, int file_line) {
  lines_.start(run_line, file ? file : "", file_line);
}

void DataHints::line_split(int line) { lines_.split(line); }

std::string DataHints::place(int line, int from_line) const {
  const LineMap::Place at = lines_.place(line);
  if (at.file.empty()) return "line " + std::to_string(line);
  std::string s = "line " + std::to_string(at.line);
  if (lines_.place(from_line).file != at.file) s += " of " + at.file;
  return s;
}

void DataHints::block_start(int line, int /*index*/, int I_NO, float /*SBEAT*/,
                            double /*STIME*/, bool /*in_beats*/) {
  open_line_ = line;
  open_I_NO_ = I_NO;
}

void DataHints::block_end(int /*line*/) { open_line_ = 0; }

void DataHints::value_read(int line, const char* text, int begin, int end, int IN_TYPE,
                           float value) {
  last_line_ = line;
  last_begin_ = begin;
  last_end_ = end;
  last_value_ = value;
  last_text_.assign(text + begin, static_cast<size_t>(end - begin));

  // A whole number joined by "," or "/" to the digits of another, in a real
  // p-field: read as two values. A longer chain ("1,2,3") is a list.
  if (IN_TYPE != CMD_RE || !is_whole(text, begin, end)) return;
  const char sep = text[end];
  if ((sep != ',' && sep != '/') || !is_digit(text[end + 1])) return;
  if (begin > 0 && text[begin - 1] == sep) return;
  int stop = end + 1;
  while (is_digit(text[stop])) ++stop;
  if (text[stop] == ',' || text[stop] == '/' || text[stop] == '.' || is_alpha(text[stop])) return;
  const std::string first = span(text, begin, end);
  const std::string second = span(text, end + 1, stop);
  const std::string written = span(text, begin, stop);

  // "0,5" is meant as a decimal number, "1/2" as a fraction.
  std::string fix, reading;
  if (sep == ',') {
    fix = first + "." + second;
    reading = "\",\" separates values, and the decimal point is \".\". For the number write ";
  } else {
    const double divisor = std::strtod(second.c_str(), nullptr);
    if (divisor == 0.0) return;
    fix = decimal(std::strtod(first.c_str(), nullptr) / divisor, 6);
    reading = "\"/\" separates values (a second \"/\" repeats the last one) and divides nothing. "
              "For the fraction write ";
  }
  out.push_back(with_fix(hint(line, begin, stop, sep == ',' ? "H13" : "H14",
                              quoted(written) + " is read as two values, " + first + " and " +
                                  second + ": " + reading + quoted(fix) + "."),
                         fix));
}

void DataHints::block_filled(int line, int P_NO, float value, long count, bool one_group,
                             bool in_beats) {
  // One value (or chord) that fills the whole block is the usual way to
  // write it.
  if (!in_beats || one_group || count < 1) return;
  const bool have_text = last_line_ > 0 && last_value_ == value;
  std::string shown = have_text ? quoted(last_text_) : decimal(static_cast<double>(value), 6);
  std::string message = "the data of p" + std::to_string(P_NO) +
                        " runs out before the end of the block, which is counted in beats: its "
                        "last value, " +
                        shown + ", is repeated to make " + std::to_string(count) + " more event" +
                        (count == 1 ? "" : "s") +
                        ". To repeat a whole pattern, write it as a loop \"< ... >\".";
  if (last_line_ > 0)
    out.push_back(hint(last_line_, last_begin_, last_end_, "H16", std::move(message)));
  else
    out.push_back(hint(line, 0, 0, "H16", std::move(message)));
}

void DataHints::weights_failed(int line, const char* text, const float* weights,
                               const WeightSpan* at, int count) {
  if (count <= 0) return;
  float sum = 0.0f;
  for (int k = 0; k < count; ++k) sum = sum + weights[k];
  int decimals = decimals_of(weights, count);
  const int shown_decimals = decimals < 1 ? 1 : decimals;

  // The weights as written, where their text is at hand (the line the
  // function ended on).
  bool one_line = true;
  bool bare_point = false;
  for (int k = 0; k < count; ++k) {
    if (at[k].line != line)
      one_line = false;
    else if (text[at[k].begin] == '.')
      bare_point = true;
  }
  std::vector<std::string> written;
  for (int k = 0; k < count; ++k) {
    if (at[k].line == line) {
      written.push_back(span(text, at[k].begin, at[k].end));
    } else {
      std::string w = decimal(static_cast<double>(weights[k]), shown_decimals);
      if (bare_point && w.rfind("0.", 0) == 0) w.erase(0, 1);
      written.push_back(w);
    }
  }
  std::string list;
  for (const std::string& w : written) list += (list.empty() ? "" : " ") + w;
  std::string message = "the weights " + list + " add up to " +
                        decimal(static_cast<double>(sum), shown_decimals) +
                        "; they must add up to 1.0";

  bool negative = false;
  for (int k = 0; k < count; ++k) negative = negative || weights[k] < 0.0f;
  std::vector<long long> units;
  if (!negative && sum > 0.0f) units = scaled(weights, count, sum, decimals);
  if (units.empty()) {
    out.push_back(hint(at[0].line, at[0].begin, at[0].end, "H15", message + "."));
    return;
  }
  std::vector<std::string> better;
  std::string better_list;
  for (long long u : units) {
    better.push_back(weight_text(u, decimals, bare_point));
    better_list += (better_list.empty() ? "" : " ") + better.back();
  }
  message += ". A version that adds up: " + better_list + ".";
  if (!one_line) {
    out.push_back(hint(at[0].line, at[0].begin, at[0].end, "H15", std::move(message)));
    return;
  }
  // One text for the whole stretch from the first weight to the last.
  std::string fix;
  int from = at[0].begin;
  for (int k = 0; k < count; ++k) {
    fix += span(text, from, at[k].begin) + better[static_cast<size_t>(k)];
    from = at[k].end;
  }
  out.push_back(with_fix(hint(line, at[0].begin, at[count - 1].end, "H15", std::move(message)),
                         std::move(fix)));
}

void DataHints::error(int number, int line, const char* text, int pos) {
  if (!open_line_ || line <= 0 || !text) return;
  const std::string block = "the block of i" + std::to_string(open_I_NO_) + " begun at " +
                            place(open_line_, line);
  if (number == kErrEofBeforeBrace) {
    // Like the run's error, about the input as a whole.
    out.push_back(
        hint(0, 0, 0, "H17", "the input ends inside " + block + ": its \"}\" is missing."));
    return;
  }
  if (pos < 0 || static_cast<size_t>(pos) > std::strlen(text)) return;
  if (number == kErrDuplicatePfield) {
    // A block that is full passes over the rest of its data up to the next
    // p-field line, and a header without "}" before it goes with that data:
    // the next block's p2 is then a second p2 of this one.
    int digits = pos;
    while (digits > 0 && is_digit(text[digits - 1])) --digits;
    if (digits == 0 || text[digits - 1] != 'p' || span(text, digits, pos) != "2") return;
    out.push_back(hint(line, digits - 1, pos, "H17",
                       "p2 a second time: " + block +
                           " is still open. Once a block is full, the rest of its data is "
                           "passed over up to the next p-field line, and a header with no "
                           "\"}\" before it is passed over with it: close that block with "
                           "\"}\" before the next header."));
    return;
  }
  if (!is_header(text, pos)) return;
  out.push_back(
      with_fix(hint(line, pos, pos, "H17",
                    "\"}\" is missing before this header: " + block +
                        " is still open, and this header is read as its data. Close that block "
                        "with \"}\" on a line before this header."),
               "}\n"));
}

}  // namespace sorvel
