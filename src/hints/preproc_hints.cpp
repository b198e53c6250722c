#include "hints/preproc_hints.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "hints/text.h"

namespace sorvel {

namespace {

constexpr int kLinePart = 2047;  // characters the run reads of a line at once

}  // namespace

int edit_distance(const std::string& a, const std::string& b) {
  std::vector<int> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = static_cast<int>(j);
  for (size_t i = 1; i <= a.size(); ++i) {
    int diagonal = row[0];
    row[0] = static_cast<int>(i);
    for (size_t j = 1; j <= b.size(); ++j) {
      const int above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

std::string nearest_name(const std::string& name, std::vector<std::string> names) {
  std::sort(names.begin(), names.end());
  std::string best;
  int best_distance = 0;
  for (const std::string& n : names) {
    const int d = edit_distance(name, n);
    if (best.empty() || d < best_distance) {
      best = n;
      best_distance = d;
    }
  }
  return best;
}

void PreprocHints::directive(int line, const char* keyword, const char* written, int begin,
                             int length) {
  const std::string as_written(written, static_cast<size_t>(length));
  if (as_written == keyword) return;
  const std::string meant = std::string("#") + keyword;
  out.push_back(with_fix(hint(line, begin, begin + length, "H09",
                              quoted("#" + as_written) + " is read as " + quoted(meant) +
                                  ": a directive's name passes when one of its letters stands "
                                  "in its place. Write " +
                                  quoted(meant) + "."),
                         keyword));
}

void PreprocHints::name_missing(int line, char kind, const char* name, int begin, int end) {
  const bool macro = kind == 'm';
  const char* what = macro ? "macro" : "constant";
  std::vector<std::string> names;
  if (macro)
    for (const auto& [n, m] : run.macro_list) names.push_back(n);
  else
    for (const auto& [n, c] : run.var_list) names.push_back(n);
  Finding f;
  f.line = line;
  f.column = begin;
  f.end_column = end;
  f.code = "H10";
  const std::string written = name;
  const std::string nearest = nearest_name(written, names);
  const std::string inside =
      begin == end ? " (called inside the body of the macro called here)" : "";
  if (nearest.empty()) {
    const char* how = macro ? "a macro is defined with \"#define\""
                            : "a constant is defined with \"#const\"";
    f.message = std::string("no ") + what + " is defined at this point" + inside + ": " + how +
                " in a global block before the line that uses it.";
  } else {
    f.message = std::string("the defined ") + what + " nearest to " + quoted(written) + inside +
                " is " + quoted(nearest) + ".";
    f.has_fix = end - begin == static_cast<int>(written.size());
    f.fix_text = nearest;
  }
  out.push_back(std::move(f));
}

void PreprocHints::include_missing(const char* name, const char* from, int line, int column) {
  namespace fs = std::filesystem;
  std::error_code ec;
  const fs::path dir = fs::path(from).parent_path();
  if (dir.empty() || fs::path(name).is_absolute() || fs::exists(name, ec)) return;
  const fs::path beside = dir / name;
  if (!fs::is_regular_file(beside, ec)) return;
  Finding f;
  f.line = line;
  f.column = f.end_column = column;
  f.code = "H11";
  f.message = quoted(name) + " is not found from the working directory, but " +
              quoted(beside.string()) + " stands next to " + quoted(from) +
              ": include file names are read from the working directory. Write \"#include |" +
              beside.string() + "|\".";
  out.push_back(std::move(f));
}

void PreprocHints::line_split(int line) {
  const bool same_line = line == last_split_ + 1;
  last_split_ = line;
  if (same_line) return;  // a further part of a line already reported
  Finding f;
  f.line = line;
  f.column = f.end_column = kLinePart;
  f.code = "H12";
  f.message =
      "this line is 2047 characters or longer: the run reads 2047 at a time, so what follows them "
      "(the rest of the line, or its end) is read as a line of its own, and the run's line "
      "numbers after it are higher than the file's.";
  out.push_back(std::move(f));
}

}  // namespace sorvel
