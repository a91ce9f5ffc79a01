#include "gateway/process/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <clocale>
#include <csignal>

#include "base/scoped_fd.h"

namespace gateway {
namespace {

// If stdin, stdout or stderr is closed, the next open() would reuse its descriptor, and what is
// printed would go into that file.
void OpenStandardStreams() {
  int fd = open("/dev/null", O_RDWR);
  while (fd >= 0 && fd <= STDERR_FILENO) fd = open("/dev/null", O_RDWR);
  // The last one is above the standard streams and not needed.
  const base::ScopedFd spare(fd);
}

}  // namespace

void PrepareProcess() {
  OpenStandardStreams();
  std::signal(SIGPIPE, SIG_IGN);
  // libedit and tables measure characters by the locale; everything here is UTF-8.
  std::setlocale(LC_CTYPE, "C.UTF-8");
}

}  // namespace gateway
