#include "gateway/signals.h"

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

// A shell starts a background program with SIGINT ignored; here both count again.
Descriptor BlockAndOpenSignals() {
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  const sigset_t set = StopSet();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  return Descriptor(signalfd(-1, &set, SFD_CLOEXEC));
}

}  // namespace

StopSignals::StopSignals(std::function<void()> on_first)
    : on_first_(std::move(on_first)),
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

void StopSignals::Watch() {
  pollfd fds[] = {{signals_.get(), POLLIN, 0}, {quit_.get(), POLLIN, 0}};
  while (poll(fds, 2, -1) < 0) continue;
  if (fds[1].revents != 0) return;
  signalfd_siginfo signal{};
  if (read(signals_.get(), &signal, sizeof(signal)) != sizeof(signal)) return;
  // From here on the default action of a signal ends the process, whatever any thread waits for.
  const sigset_t set = StopSet();
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  on_first_();
  eventfd_write(stop_.get(), 1);
  while (poll(&fds[1], 1, -1) < 0) continue;
}

}  // namespace gateway
