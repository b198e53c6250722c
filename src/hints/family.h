// A family of hints: an observer of the run that adds what it finds to the
// checker's list. Each family lives in its own file and watches only the
// calls it needs; the checker hands every call to every family.
#pragma once

#include "base/observer.h"
#include "base/run_state.h"
#include "hints/finding.h"

namespace sorvel {

class Family : public Observer {
 public:
  Family(const Run& run, Findings& out) : run(run), out(out) {}
  // Called once after the run, before the findings are printed.
  virtual void finish() {}

 protected:
  const Run& run;
  Findings& out;
};

}  // namespace sorvel
