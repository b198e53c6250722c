#include "driver/run_sorvel.h"

#include <cstdio>
#include <new>
#include <string>

#include "base/catalog.h"
#include "base/diag.h"
#include "driver/options.h"
#include "driver/run_files.h"
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

// Frees the run-wide lists and ends the run's files: true when the run
// ended well (`ok`) and every file was written and put in place.
bool clean_up(Run& run, Block* block, RunFiles& files, bool ok) {
  if (block) block->note_list.FreeListNodes();
  run.macro_list.clear();
  run.var_list.clear();
  return files.finish(ok);
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
int run_blocks(Run& run, RunFiles& files, const std::vector<BlockSink*>& sinks) {
  Source src(run, run.fin);
  Block block(run.MAX_EVENTS);
  Pfield pfield;
  Ctx c{run, block, pfield, src};
  CsoundWriter csound(run, block);
  MidiWriter midi(run, block);
  BlockSink& writer = run.MKMIDI ? static_cast<BlockSink&>(midi) : csound;

  // A read of the temporary file that failed ends the input early: that,
  // not what the parsers made of it, is the error.
  auto fail = [&](int number) {
    error_no(run, files.read_failed() ? kErrTempFile : number, src.line, src.buffer, src.pos);
    clean_up(run, &block, files, false);
    return 1;
  };

  try {
    int block_no = 1;
    for (;;) {
      int r = parse_gblock(src, run.fout);
      if (r > 0) return fail(r);
      r = do_iblock(c, block_no, writer, sinks);
      if (r > 0) return fail(r);
      if (files.write_failed()) {
        clean_up(run, &block, files, false);
        return 1;
      }
      if (files.read_failed()) return fail(kErrTempFile);
      if (src.at_eof() && src.at_line_end()) {
        if (!ifdef_match(run)) return fail(kErrIfMissingEndif);
        break;
      }
      if (run.MKMIDI) {
        if (run.observer) name_blocks_left_out(c);
        if (!clean_up(run, &block, files, true)) return 1;
        std::fputs("\n", run.screen);
        return 0;
      }
      if (src.at_eof()) break;
    }
    if (!run.MKMIDI) std::fputs("\ne\n", run.fout);
    Mprintf(run, "\n\nGlobal cumulative duration of all i-blocks = %f (secs)\n", run.CUM_TIME);
  } catch (const std::bad_alloc&) {
    return fail(kErrOutOfMemory);
  }
  if (!clean_up(run, &block, files, true)) return 1;
  std::fputs("\n", run.screen);
  return 0;
}

}  // namespace

int run_sorvel(Run& run, int argc, char** argv, const std::vector<BlockSink*>& sinks) {
  if (get_options(run, argc, argv)) return 1;
  if (check_fnames(run)) return 1;
  RunFiles files(run);
  run.includes = &files;
  struct Detach {  // the file layer lives as long as this call
    Run& run;
    ~Detach() { run.includes = nullptr; }
  } detach{run};
  if (files.open_all()) {
    files.finish(false);
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
    clean_up(run, nullptr, files, false);
    return 1;
  }
  if (int e = files.read_back()) {
    error_no(run, e, 0, "", 0);
    clean_up(run, nullptr, files, false);
    return 1;
  }
  return run_blocks(run, files, sinks);
}

}  // namespace sorvel
