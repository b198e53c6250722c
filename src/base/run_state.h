// The state of one run of Sorvel: everything that lives from the command line
// to the clean-up. Each run has its own Run object, so one process can make
// many independent runs (the tests and the fuzzer do).
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/rng.h"
#include "base/tempo_map.h"

namespace sorvel {

class Observer;  // base/observer.h

// A macro definition: #define NAME(args) #body#
struct Macro {
  std::string name;
  int nargs = 0;
  std::string body;
  std::vector<std::string> args;
};

// A named constant: #const NAME value
struct Constant {
  std::string name;
  double value = 0.0;
};

// How a run opens the files its input names: the include pass asks it for
// each include file, and it may refuse one (nullptr). The driver's file
// layer provides it.
class IncludeOpener {
 public:
  virtual FILE* open_include(const char* name) = 0;

 protected:
  ~IncludeOpener() = default;
};

struct Run {
  // Command-line flags (0 off, 1 on).
  int MKLOG = 0;        // -l: copy every message into the log
  int MKMIDI = 0;       // -m: write a Standard MIDI File
  int SUPRESS = 0;      // -s: no warnings or progress messages
  int SHOW_TEMPOS = 0;  // -t: verbose tempo information
  int MKEXP = 0;        // -x: write the expanded source lines

  // File names (pointers into the argument vector) and streams.
  const char* in_fname = nullptr;
  const char* out_fname = nullptr;
  const char* log_fname = nullptr;
  const char* exp_fname = nullptr;
  std::string tmp_dir;  // where the temporary file is made; empty: TMPDIR, else /tmp
  IncludeOpener* includes = nullptr;  // without one, an include is opened as it stands
  // The file layer's plain way even where the system offers files without a
  // name: new files are named from the start (the tests try both ways).
  bool plain_files = false;
  FILE* fin = nullptr;
  FILE* fout = nullptr;
  FILE* ftmp = nullptr;
  FILE* fllog = nullptr;
  FILE* fecho = nullptr;
  FILE* screen = stderr;   // the standard error stream: every message
  FILE* console = stdout;  // the standard output stream
  // Who listens to what the readers read (the hints checker, the playground);
  // none by default.
  Observer* observer = nullptr;

  // Settings.
  float TEMPO = 60.0f;
  float PFACTOR = 1.0f;
  float MAX_DEV = 0.0f;
  float MAX_DEV2 = 0.0f;
  unsigned SRATE = 44100;
  int RE_FW_DEFAULT = 3;
  int FFT_SZ_DEFAULT = 4;

  // Tempo map: record 0 is a constant 60 beats per minute.
  TempoMap tempo_map;

  // Preprocessing.
  // Definitions by name (a name is defined at most once, so a lookup by name
  // finds the one definition a newest-first search would).
  std::unordered_map<std::string, Macro> macro_list;
  std::unordered_map<std::string, Constant> var_list;
  int IN_COMMENT = 0;
  int IN_MACRO_DEF = 0;
  int IF_MATCH = 0;
  int IN_IF0 = 0;
  float if_value = 0.0f;  // condition of the latest #if
  int start_level = 0;    // IF_MATCH before the #if being skipped

  // The octave that a pitch name without one uses: the last one given.
  int oct = 4;

  Rng rng;

  // Run totals (seconds).
  double CUM_TIME = 0.0;
  double LAST_IB_DUR = 0.0;

  // Most events one block may hold; one more is refused as memory exhaustion.
  size_t MAX_EVENTS = 10000000;
};

}  // namespace sorvel
