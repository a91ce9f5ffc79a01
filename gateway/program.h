// The gateway program, all but its first lines.
#ifndef QORN_GATEWAY_PROGRAM_H_
#define QORN_GATEWAY_PROGRAM_H_

#include "gateway/options.h"

namespace gateway {

// Runs until its input ends or it is told to stop; answers the exit status. Call it once, on the
// only thread of the process.
int RunGateway(const Options& options);

}  // namespace gateway

#endif  // QORN_GATEWAY_PROGRAM_H_
