// qornctl: the gateway's console over the bus.
#ifndef QORN_CTL_PROGRAM_H_
#define QORN_CTL_PROGRAM_H_

#include "ctl/options.h"

namespace ctl {

// Runs one command, or those that are typed or piped, and returns the exit status. Call it once,
// while the process has no other thread.
int RunCtl(const Options& options);

}  // namespace ctl

#endif  // QORN_CTL_PROGRAM_H_
