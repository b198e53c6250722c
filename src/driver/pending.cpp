#include "driver/pending.h"

#include <signal.h>
#include <unistd.h>

#include <cstring>

#if defined(__EMSCRIPTEN__) || !defined(SA_RESETHAND)
#define SORVEL_NO_SIGNALS 1
#endif

namespace sorvel {

namespace {

constexpr int kSlots = 8;
const char* volatile g_names[kSlots];
int g_held = 0;

#ifndef SORVEL_NO_SIGNALS

const int kSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGXCPU, SIGXFSZ};
constexpr int kSignalCount = sizeof kSignals / sizeof kSignals[0];
bool g_installed[kSignalCount];

extern "C" void remove_held_names(int sig) {
  for (int i = 0; i < kSlots; ++i) {
    const char* name = g_names[i];
    if (name) unlink(name);
  }
  // The action is back to the default (SA_RESETHAND): once this handler
  // returns, the signal ends the run as it would have without it.
  raise(sig);
}

void install() {
  for (int i = 0; i < kSignalCount; ++i) {
    struct sigaction old;
    g_installed[i] = false;
    if (sigaction(kSignals[i], nullptr, &old) != 0 || old.sa_handler != SIG_DFL ||
        (old.sa_flags & SA_SIGINFO))
      continue;
    struct sigaction act;
    std::memset(&act, 0, sizeof act);
    act.sa_handler = remove_held_names;
    sigemptyset(&act.sa_mask);
    act.sa_flags = SA_RESETHAND;
    g_installed[i] = sigaction(kSignals[i], &act, nullptr) == 0;
  }
}

void uninstall() {
  for (int i = 0; i < kSignalCount; ++i) {
    if (!g_installed[i]) continue;
    struct sigaction act;
    std::memset(&act, 0, sizeof act);
    act.sa_handler = SIG_DFL;
    sigemptyset(&act.sa_mask);
    sigaction(kSignals[i], &act, nullptr);
    g_installed[i] = false;
  }
}

#else

void install() {}
void uninstall() {}

#endif

}  // namespace

int hold_name(const char* path) {
  for (int i = 0; i < kSlots; ++i) {
    if (g_names[i]) continue;
    if (g_held++ == 0) install();
    g_names[i] = path;
    return i;
  }
  return -1;
}

void release_name(int slot) {
  if (slot < 0 || slot >= kSlots || !g_names[slot]) return;
  g_names[slot] = nullptr;
  if (--g_held == 0) uninstall();
}

#ifndef SORVEL_NO_SIGNALS

namespace {
sigset_t g_saved_mask;
}  // namespace

SignalsHeld::SignalsHeld() {
  sigset_t block;
  sigemptyset(&block);
  for (int sig : kSignals) sigaddset(&block, sig);
  sigprocmask(SIG_BLOCK, &block, &g_saved_mask);
}

SignalsHeld::~SignalsHeld() { sigprocmask(SIG_SETMASK, &g_saved_mask, nullptr); }

#else

SignalsHeld::SignalsHeld() {}
SignalsHeld::~SignalsHeld() {}

#endif

}  // namespace sorvel
