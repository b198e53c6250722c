#include "driver/run.h"

#include <unistd.h>

#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "base/diag.h"
#include "driver/options.h"
#include "global/gblock.h"
#include "iblock/iblock.h"
#include "input/includes.h"
#include "input/preproc.h"
#include "input/source.h"
#include "output/events.h"
#include "output/writers.h"
#include "pfield/state.h"

namespace sorvel {

namespace {

void close_stream(FILE*& f) {
  if (f) std::fclose(f);
  f = nullptr;
}

void remove_tmp(Run& run) {
  if (run.tmp_fname.empty()) return;
  std::remove(run.tmp_fname.c_str());
  run.tmp_fname.clear();
}

// Closes whatever is open and removes the temporary file: used when the run
// ends before its main loop could start.
void abandon(Run& run) {
  close_stream(run.fin);
  close_stream(run.fout);
  close_stream(run.ftmp);
  close_stream(run.fecho);
  close_stream(run.fllog);
  remove_tmp(run);
}

FILE* open_named(Run& run, const char* name, const char* mode) {
  FILE* f = std::fopen(name, mode);
  if (!f) std::fprintf(run.screen, "\nERROR: Can't open \"%s\".\n\n", name);
  return f;
}

// Creates the temporary file with a unique name that no one else can have
// opened, and opens it for writing.
FILE* open_tmp(Run& run) {
  std::string templ = run.tmp_dir + "/sorvelXXXXXX";
  std::vector<char> name(templ.begin(), templ.end());
  name.push_back('\0');
  int fd = mkstemp(name.data());
  if (fd < 0) return nullptr;
  run.tmp_fname = name.data();
  FILE* f = fdopen(fd, "w");
  if (!f) {
    close(fd);
    remove_tmp(run);
  }
  return f;
}

int open_files(Run& run) {
  if (!(run.fin = open_named(run, run.in_fname, "r"))) return 1;
  if (!(run.fout = open_named(run, run.out_fname, run.MKMIDI ? "wb" : "w"))) return 1;
  if (run.MKEXP && !(run.fecho = open_named(run, run.exp_fname, "w"))) return 1;
  if (!(run.ftmp = open_tmp(run))) {
    std::fputs("\nERROR: Can't open temporary file\n\n", run.screen);
    return 1;
  }
  if (run.MKLOG && !(run.fllog = open_named(run, run.log_fname, "w"))) return 1;
  return 0;
}

void clean_up(Run& run, Block* block) {
  if (block) block->note_list.FreeListNodes();
  run.macro_list.clear();
  run.var_list.clear();
  close_stream(run.fin);
  close_stream(run.fout);
  close_stream(run.fecho);
  close_stream(run.fllog);
  close_stream(run.ftmp);
  remove_tmp(run);
}

// Parses one i-block and hands it to the writer, then, when something
// sounded, to every other sink. Returns 0 or a positive error number.
int do_iblock(Ctx& c, int& block_no, BlockSink& writer, const std::vector<BlockSink*>& sinks) {
  Run& run = c.run;
  Block& block = c.block;
  int r = parse_iblock(c);
  if (r > 0) return r;

  const FinishedBlock finished{block_no, block, run};
  if ((r = writer.take_block(finished))) return r;
  if (!block.note_list.handle) {  // nothing sounded: the writer wrote nothing
    if (block_no == 1) Mprintf(run, "\n\n\t(N.B. No I-Block Data Written)");
    return 0;
  }
  for (BlockSink* sink : sinks)
    if ((r = sink->take_block(finished))) return r;

  double secs = 0.0, end_secs = 0.0;
  float beats = 0.0f;
  int count = 0;
  GetListStats(block.note_list, secs, beats, end_secs, count);
  if (end_secs > run.CUM_TIME) run.CUM_TIME = end_secs;
  run.LAST_IB_DUR = secs;
  Mprintf(run, "\n\n%d events generated in block #%d (i%d).\n", count, block_no, block.I_NO);
  Mprintf(run, "Total i-block duration: %f (secs), %f (beats)\n", secs, beats);
  Mprintf(run, "Cumulative i-block duration: %f (secs)\n", end_secs);
  ++block_no;
  block.note_list.FreeListNodes();
  return 0;
}

// The main loop over g-blocks and i-blocks, once the temporary file is open
// for reading. Returns the exit status.
int run_blocks(Run& run, const std::vector<BlockSink*>& sinks) {
  Source src(run, run.fin);
  Block block(run.MAX_EVENTS);
  Pfield pfield;
  Ctx c{run, block, pfield, src};
  CsoundWriter csound(run, block);
  MidiWriter midi(run, block);
  BlockSink& writer = run.MKMIDI ? static_cast<BlockSink&>(midi) : csound;

  auto fail = [&](int number) {
    error_no(run, number, src.line, src.buffer, src.pos);
    clean_up(run, &block);
    return 1;
  };

  try {
    int block_no = 1;
    for (;;) {
      int r = parse_gblock(src, run.fout);
      if (r > 0) return fail(r);
      r = do_iblock(c, block_no, writer, sinks);
      if (r > 0) return fail(r);
      if (src.at_eof() && src.at_line_end()) {
        if (!ifdef_match(run)) return fail(119);
        break;
      }
      if (run.MKMIDI) {
        clean_up(run, &block);
        std::fputs("\n", run.screen);
        return 0;
      }
      if (src.at_eof()) break;
    }
    if (!run.MKMIDI) std::fputs("\ne\n", run.fout);
    Mprintf(run, "\n\nGlobal cumulative duration of all i-blocks = %f (secs)\n", run.CUM_TIME);
  } catch (const std::bad_alloc&) {
    return fail(32);
  }
  clean_up(run, &block);
  std::fputs("\n", run.screen);
  return 0;
}

}  // namespace

int run_sorvel(Run& run, int argc, char** argv, const std::vector<BlockSink*>& sinks) {
  if (get_options(run, argc, argv)) return 1;
  if (check_fnames(run)) return 1;
  if (open_files(run)) {
    abandon(run);
    return 1;
  }
  print_info(run.screen, run);
  if (run.MKLOG) print_info(run.fllog, run);

  int counter = 0;
  int r;
  try {
    r = parse_includes(run, run.fin, run.ftmp, counter);
  } catch (const std::bad_alloc&) {
    Mprintf(run, "\nERROR: %s\n\n", "Yikes, out of memory!");
    r = 1;
  }
  if (r > 0) {
    clean_up(run, nullptr);
    return 1;
  }
  close_stream(run.fin);
  close_stream(run.ftmp);
  run.fin = std::fopen(run.tmp_fname.c_str(), "r");
  if (!run.fin) {
    error_no(run, 9, 0, "", 0);
    clean_up(run, nullptr);
    return 1;
  }
  return run_blocks(run, sinks);
}

}  // namespace sorvel
