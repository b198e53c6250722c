#include "driver/options.h"

#include "driver/places.h"

#ifndef SORVEL_BUILD_DATE
#define SORVEL_BUILD_DATE "Nov 21 2026"
#endif
#ifndef SORVEL_BUILD_TIME
#define SORVEL_BUILD_TIME "12:00:00"
#endif

namespace sorvel {

const char* const VERSION = "1.0.0";

namespace {

void print_banner_line(FILE* stream) {
  std::fprintf(stream, "\nSorvel (%s, %s, %s)\n", VERSION, SORVEL_BUILD_DATE, SORVEL_BUILD_TIME);
}

int usage_failure(Run& run) {
  print_usage(run.screen);
  return 1;
}

}  // namespace

void print_usage(FILE* stream) {
  print_banner_line(stream);
  std::fputs(
      "A score generator for Csound and Standard MIDI Files\n"
      "Written by the Sorvel developers\n"
      "Report problems through the project's issue tracker\n"
      "\n"
      "  Usage: sorvel [options] infile outfile\n"
      "  Options:\n"
      "  -l <logfile>  screen ouput (text)\n"
      "  -m            outfile is a MIDI file (format 1)\n"
      "  -s            suppress non-error messages\n"
      "  -t            verbose tempo information\n"
      "  -x <expfile>  macro expansions (text)\n\n",
      stream);
}

void print_info(FILE* stream, const Run& run) {
  print_banner_line(stream);
  std::fputs(
      "A score generator for Csound and Standard MIDI Files\n"
      "Written by the Sorvel developers\n"
      "Free software: use it, study it, share it\n"
      "Report problems through the project's issue tracker\n",
      stream);
  std::fprintf(stream, "\n\nInput\t= \"%s\"\nOutput\t= \"%s\" ", run.in_fname, run.out_fname);
  std::fputs(run.MKMIDI ? "[MIDI file (type 1)]\n" : "[Csound score-file]\n", stream);
  if (run.MKLOG) std::fprintf(stream, "Log \t= \"%s\"\n", run.log_fname);
  if (run.MKEXP) std::fprintf(stream, "MExp\t= \"%s\"\n", run.exp_fname);
}

int get_options(Run& run, int argc, char** argv) {
  if (argc - 1 <= 0) return usage_failure(run);
  int i = 1;
  for (; i < argc && argv[i][0] == '-'; ++i) {
    const char letter = argv[i][1];
    switch (letter) {
      case 'm':
        run.MKMIDI = 1;
        break;
      case 's':
        run.SUPRESS = 1;
        break;
      case 't':
        run.SHOW_TEMPOS = 1;
        break;
      case 'l':
      case 'x': {
        const char* name = argv[i] + 2;
        if (*name == '\0') {
          if (i + 1 >= argc || argv[i + 1][0] == '-') {
            std::fputs(letter == 'l' ? "\nError: No logfile name\n\n"
                                     : "\nError: No macro-expansion file name\n\n",
                       run.console);
            return 1;
          }
          name = argv[++i];
        }
        if (letter == 'l') {
          run.MKLOG = 1;
          run.log_fname = name;
        } else {
          run.MKEXP = 1;
          run.exp_fname = name;
        }
        break;
      }
      default:  // outside "l" to "x", or a letter there that is no option
        return usage_failure(run);
    }
  }
  if (argc - i != 2) return usage_failure(run);
  run.in_fname = argv[i];
  run.out_fname = argv[i + 1];
  return 0;
}

int check_fnames(Run& run) {
  bool dup = same_file(run.in_fname, run.out_fname);
  if (run.MKLOG)
    dup = dup || same_file(run.log_fname, run.out_fname) || same_file(run.log_fname, run.in_fname);
  if (run.MKEXP)
    dup = dup || same_file(run.exp_fname, run.out_fname) || same_file(run.exp_fname, run.in_fname);
  if (run.MKLOG && run.MKEXP) dup = dup || same_file(run.log_fname, run.exp_fname);
  if (!dup) return 0;
  std::fputs("\nERROR: You can't use a filename multiple times!\n\n", run.screen);
  return 1;
}

}  // namespace sorvel
