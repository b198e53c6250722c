#include "iblock/dispatch.h"

#include "ddf/ddf.h"
#include "global/settings.h"
#include "input/commands.h"

namespace sorvel {

int do_commands(Ctx& c, int code, DataList& d) {
  Source& src = c.src;
  switch (code) {
    case CMD_EX: return do_DDF(c, DDF_EX, d);
    case CMD_DV: return set_rand_dev2(src);
    case CMD_HO: return do_DDF(c, DDF_HO, d);
    case CMD_MO: return do_DDF(c, DDF_MO, d);
    case CMD_SE: return do_DDF(c, DDF_SE, d);
    case CMD_PF: return set_pfactor(src, c.pfield.P_NO);
    case CMD_RA: return do_DDF(c, DDF_RA, d);
    case CMD_RD: return set_rand_dev(src);
    case CMD_RS: return set_rand_seed(src);
    case CMD_RW: return do_DDF(c, DDF_RW, d);
    case CMD_MS: return do_DDF(c, DDF_MS, d);
    case CMD_S2: return do_S2(c, d);
    case CMD_SR: return set_samp_rate(src);
    default:
      return code > CMD_SR ? code : 0;
  }
}

}  // namespace sorvel
