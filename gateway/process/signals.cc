#include "gateway/process/signals.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>

#include <csignal>
#include <utility>

namespace gateway {
namespace {

sigset_t StopSet() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  return set;
}

// A shell starts a background program with SIGINT ignored, and a signal that is ignored is never
// queued for signalfd. So the default actions are restored before the signals are blocked.
base::ScopedFd BlockAndOpenSignals() {
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  sigset_t set = StopSet();
  sigaddset(&set, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  return base::ScopedFd(signalfd(-1, &set, SFD_CLOEXEC));
}

}  // namespace

StopSignals::StopSignals(std::function<void()> on_first, std::function<void()> on_hangup)
    : on_first_(std::move(on_first)),
      on_hangup_(std::move(on_hangup)),
      signals_(BlockAndOpenSignals()),
      stop_(eventfd(0, EFD_CLOEXEC)),
      quit_(eventfd(0, EFD_CLOEXEC)),
      watcher_([this] { Watch(); }) {}

StopSignals::~StopSignals() {
  eventfd_write(quit_.get(), 1);
  watcher_.join();
}

bool StopSignals::WaitForStop(std::chrono::milliseconds time) const {
  pollfd stop{stop_.get(), POLLIN, 0};
  return poll(&stop, 1, static_cast<int>(time.count())) == 1;
}

int StopSignals::NextSignal() const {
  pollfd fds[] = {{signals_.get(), POLLIN, 0}, {quit_.get(), POLLIN, 0}};
  while (poll(fds, 2, -1) < 0) continue;
  if (fds[1].revents != 0) return 0;
  signalfd_siginfo signal{};
  if (read(signals_.get(), &signal, sizeof(signal)) != sizeof(signal)) return 0;
  return static_cast<int>(signal.ssi_signo);
}

void StopSignals::Watch() {
  int signal = NextSignal();
  for (; signal == SIGHUP; signal = NextSignal()) on_hangup_();
  if (signal == 0) return;
  // From here on the default action of a signal ends the process, whatever any thread waits for.
  const sigset_t set = StopSet();
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  on_first_();
  // Never read, so it stays readable for everyone who polls it.
  eventfd_write(stop_.get(), 1);
  pollfd quit{quit_.get(), POLLIN, 0};
  while (poll(&quit, 1, -1) < 0) continue;
}

}  // namespace gateway
