// sorvel-hints: runs Sorvel on an input exactly as sorvel does and says what
// in it may not mean what it seems to, with the run's own errors and warnings,
// each in the file and line where its text stands.
//
//   sorvel-hints [sorvel options] [--json] infile
//
// The score (or MIDI file) is written to the null device, and -l and -x are
// taken but write nothing: sorvel-hints writes no file. The run's messages
// go to a temporary stream that the checker reads back. The findings go to
// the standard output; the exit status is 0 when there is nothing to say, 1
// for hints and warnings only, 2 when the run failed.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "driver/options.h"
#include "driver/run_sorvel.h"
#include "hints/checker.h"
#include "hints/report.h"

namespace {

constexpr int kBadUsage = 2;

void print_hints_usage(FILE* stream) {
  std::fputs(
      "  Usage: sorvel-hints [options] [--json] infile\n"
      "  Runs infile as sorvel does and prints what may not mean what it seems to,\n"
      "  one finding a line (file:line:column: severity: message), or with --json\n"
      "  a JSON array. Exit status: 0 nothing to report, 1 hints or warnings,\n"
      "  2 the run failed.\n"
      "  Options (as for sorvel; no file is written):\n"
      "  -m            run as for a MIDI file (format 1)\n"
      "  -s            leave out the run's warnings\n"
      "  -t            verbose tempo information (not shown)\n"
      "  -l <logfile>  taken, not written\n"
      "  -x <expfile>  taken, not written\n\n",
      stream);
}

int bad_usage(const char* why) {
  std::fprintf(stderr, "sorvel-hints: %s\n", why);
  print_hints_usage(stderr);
  return kBadUsage;
}

}  // namespace

int main(int argc, char** argv) {
  bool json = false;
  std::vector<char*> given;  // sorvel's options and the input
  for (int i = 1; i < argc; ++i) {
    if (!std::strcmp(argv[i], "--json"))
      json = true;
    else if (!std::strcmp(argv[i], "--help"))
      return print_hints_usage(stdout), 0;
    else
      given.push_back(argv[i]);
  }
  if (given.empty()) return bad_usage("no input file");

  // The command line as sorvel would take it, with the null device as output.
  char null_device[] = "/dev/null";
  char program[] = "sorvel";
  std::vector<char*> args{program};
  args.insert(args.end(), given.begin(), given.end());
  args.push_back(null_device);
  {
    sorvel::Run check;
    FILE* quiet = std::tmpfile();
    check.screen = check.console = quiet ? quiet : stderr;
    const int bad = sorvel::get_options(check, static_cast<int>(args.size()), args.data());
    if (quiet) std::fclose(quiet);
    if (bad) return bad_usage("bad command line");
  }
  // The same run without the log and the expansion file.
  std::vector<char*> run_args{program};
  for (size_t i = 1; i + 2 < args.size(); ++i) {
    const char* a = args[i];
    if (a[0] == '-' && (a[1] == 'l' || a[1] == 'x')) {
      if (a[2] == '\0') ++i;  // the name is the next argument
      continue;
    }
    run_args.push_back(args[i]);
  }
  run_args.push_back(args[args.size() - 2]);
  run_args.push_back(null_device);

  FILE* screen = std::tmpfile();
  if (!screen) {
    std::fputs("sorvel-hints: cannot make a temporary file for the run's messages\n", stderr);
    return kBadUsage;
  }
  sorvel::Run run;
  run.screen = run.console = screen;
  sorvel::HintsChecker checker(run);
  checker.capture(screen);
  run.observer = &checker;
  const int status = sorvel::run_sorvel(run, static_cast<int>(run_args.size()), run_args.data());
  const std::vector<sorvel::PlacedFinding> findings = checker.finish(status);
  std::fclose(screen);

  const std::string report =
      json ? sorvel::json_report(findings) : sorvel::text_report(findings);
  std::fwrite(report.data(), 1, report.size(), stdout);
  if (std::fflush(stdout) != 0) return kBadUsage;
  if (status != 0) return 2;
  return findings.empty() ? 0 : 1;
}
