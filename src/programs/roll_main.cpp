// sorvel-roll: runs Sorvel on an input exactly as sorvel does and draws the
// notes it made as an SVG piano roll.
//
//   sorvel-roll [sorvel options] [--pitch pN] [--amp pN|none] [--from S]
//               [--to S] [--width PX] [--max-notes N] infile out.svg
//
// The score (or MIDI file) itself is written to the null device; the blocks
// reach the roll through the block seam. The picture is written only when
// the run succeeds, to a new file that replaces out.svg once it is complete.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "driver/options.h"
#include "driver/run_sorvel.h"
#include "roll/collect.h"
#include "roll/frame.h"
#include "roll/roll.h"

namespace {

using sorvel::RollOptions;

void print_roll_usage(FILE* stream) {
  std::fputs(
      "  Usage: sorvel-roll [options] [roll options] infile out.svg\n"
      "  Roll options:\n"
      "  --pitch pN     p-field on the y axis (default: the first pitch p-field, else p4)\n"
      "  --amp pN|none  p-field that sets the opacity (default: the first in dB)\n"
      "  --from S       draw from S seconds\n"
      "  --to S         draw up to S seconds\n"
      "  --width PX     width of the picture (default 1000)\n"
      "  --max-notes N  above N notes draw a density image (default 200000)\n\n",
      stream);
}

int bad_option(const char* option, const char* value) {
  std::fprintf(stderr, "\nERROR: Bad value for %s: \"%s\"\n\n", option, value ? value : "");
  print_roll_usage(stderr);
  return 1;
}

bool read_pfield(const char* text, int& pno) {
  if (*text == 'p' || *text == 'P') ++text;
  char* end = nullptr;
  errno = 0;
  const long v = std::strtol(text, &end, 10);
  if (end == text || *end || errno || v < 4 || v > 128) return false;
  pno = static_cast<int>(v);
  return true;
}

bool read_seconds(const char* text, double& s) {
  char* end = nullptr;
  s = std::strtod(text, &end);
  return end != text && !*end && std::isfinite(s) && s >= 0.0;
}

bool read_count(const char* text, long low, long high, long& v) {
  char* end = nullptr;
  errno = 0;
  v = std::strtol(text, &end, 10);
  return end != text && !*end && !errno && v >= low && v <= high;
}

// Takes the roll's own options out of the command line. Returns 0, or 1
// after a message.
int take_roll_options(int argc, char** argv, RollOptions& o, std::vector<char*>& rest) {
  rest.push_back(argv[0]);
  for (int i = 1; i < argc; ++i) {
    const char* a = argv[i];
    const bool ours = !std::strcmp(a, "--pitch") || !std::strcmp(a, "--amp") ||
                      !std::strcmp(a, "--from") || !std::strcmp(a, "--to") ||
                      !std::strcmp(a, "--width") || !std::strcmp(a, "--max-notes");
    if (!ours) {
      rest.push_back(argv[i]);
      continue;
    }
    const char* v = i + 1 < argc ? argv[++i] : nullptr;
    if (!v) return bad_option(a, v);
    long n = 0;
    if (!std::strcmp(a, "--pitch")) {
      if (!read_pfield(v, o.pitch)) return bad_option(a, v);
    } else if (!std::strcmp(a, "--amp")) {
      if (!std::strcmp(v, "none"))
        o.amp = -1;
      else if (!read_pfield(v, o.amp))
        return bad_option(a, v);
    } else if (!std::strcmp(a, "--from")) {
      if (!read_seconds(v, o.from)) return bad_option(a, v);
    } else if (!std::strcmp(a, "--to")) {
      if (!read_seconds(v, o.to)) return bad_option(a, v);
    } else if (!std::strcmp(a, "--width")) {
      if (!read_count(v, 400, 100000, n)) return bad_option(a, v);
      o.width = static_cast<int>(n);
    } else {
      if (!read_count(v, 0, 100000000, n)) return bad_option(a, v);
      o.max_notes = static_cast<size_t>(n);
    }
  }
  if (o.from >= 0.0 && o.to >= 0.0 && !(o.to > o.from)) return bad_option("--to", "not after --from");
  return 0;
}

// Names of one file: equal, naming one existing file, or, for names not
// there yet, one place once their directories are resolved.
bool same_name(const char* a, const char* b) {
  if (!a || !b) return false;
  if (std::strcmp(a, b) == 0) return true;
  namespace fs = std::filesystem;
  std::error_code ec;
  const bool same = fs::equivalent(a, b, ec);
  if (!ec) return same;
  auto resolved = [](const char* name, fs::path& out) {
    std::error_code e1, e2;
    const fs::path whole = fs::absolute(name, e1);
    if (e1) return false;
    out = fs::weakly_canonical(whole, e2);
    return !e2;
  };
  fs::path pa, pb;
  return resolved(a, pa) && resolved(b, pb) && pa == pb;
}

// Writes the picture beside its place and renames it there, so a failed
// write leaves any earlier picture as it was.
int write_picture(const char* name, const std::string& svg) {
  std::string temp = std::string(name) + ".XXXXXX";
  std::vector<char> path(temp.begin(), temp.end());
  path.push_back('\0');
  const int fd = mkstemp(path.data());
  FILE* f = fd >= 0 ? fdopen(fd, "w") : nullptr;
  if (!f) {
    if (fd >= 0) {
      close(fd);
      std::remove(path.data());
    }
    std::fprintf(stderr, "\nERROR: Can't open \"%s\".\n\n", name);
    return 1;
  }
  bool ok = std::fwrite(svg.data(), 1, svg.size(), f) == svg.size();
  ok = (std::fclose(f) == 0) && ok;
  // The new file gets the usual permissions of a new file, as fopen gives it.
  const mode_t mask = umask(0);
  umask(mask);
  ok = ok && chmod(path.data(), 0666 & ~mask) == 0;
  if (!ok || std::rename(path.data(), name) != 0) {
    std::remove(path.data());
    std::fprintf(stderr, "\nERROR: Can't write \"%s\".\n\n", name);
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  static char screen_buffer[1 << 16];
  std::setvbuf(stderr, screen_buffer, _IOFBF, sizeof screen_buffer);

  RollOptions options;
  std::vector<char*> args;
  if (take_roll_options(argc, argv, options, args)) return 1;

  // The command line as sorvel sees it: the picture's name becomes the null
  // device. A bad command line is reported by sorvel's own option reader.
  char null_device[] = "/dev/null";
  const char* svg_name = nullptr;
  if (args.size() >= 3 && args.back()[0] != '-') {
    svg_name = args.back();
    args.back() = null_device;
  }
  {
    sorvel::Run check;
    if (sorvel::get_options(check, static_cast<int>(args.size()), args.data())) {
      if (argc == 1) print_roll_usage(stderr);
      return 1;
    }
    if (same_name(svg_name, check.in_fname) || same_name(svg_name, check.log_fname) ||
        same_name(svg_name, check.exp_fname)) {
      std::fputs("\nERROR: You can't use a filename multiple times!\n\n", stderr);
      return 1;
    }
  }

  sorvel::Run run;
  sorvel::Roll roll;
  sorvel::RollSink sink(roll, options);
  const int status = sorvel::run_sorvel(run, static_cast<int>(args.size()), args.data(), {&sink});
  if (status != 0) return status;

  double end = 0.0;
  for (const sorvel::RollNote& n : roll.notes)
    end = std::max(end, static_cast<double>(n.start) + static_cast<double>(n.dur));
  if (options.to >= 0.0) end = options.to;
  roll.beats = sorvel::beat_times(run, end);
  roll.caption = run.in_fname;
  const std::string svg = sorvel::draw_roll(roll, options);
  size_t drawn = 0;
  for (const sorvel::RollNote& n : roll.notes) drawn += sorvel::in_range(n, options);
  if (drawn > options.max_notes)
    std::fprintf(stderr, "%s: a density image of %zu notes (more than %zu to draw one by one)\n",
                 svg_name, drawn, options.max_notes);
  return write_picture(svg_name, svg);
}
