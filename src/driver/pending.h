// New files that have a name while a run writes them. Where the system can
// make a file without a name, a run's new files have none until they are put
// in place, and nothing here is used; elsewhere the names are kept here, and
// an interrupt, a hang-up or a termination signal removes them before the run
// ends with that signal's status. Signals that were already being caught or
// ignored are left as they were.
#pragma once

namespace sorvel {

// Keeps `path` (which must outlive the holding) to be removed on a signal.
// Returns its slot, or -1 when the table is full (then it is only removed on
// the paths the run itself takes).
int hold_name(const char* path);
void release_name(int slot);

// Holds the termination signals back while it lives, so that a file is
// made and recorded, or linked and renamed, as one step. (Not nested.)
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
};

}  // namespace sorvel
