// The program from its start to its exit status: it joins the parts that the other folders hold.
#ifndef QORN_GATEWAY_PROGRAM_H_
#define QORN_GATEWAY_PROGRAM_H_

#include "gateway/options.h"

namespace gateway {

// Runs until the input ends or the program is told to stop, and returns the exit status. Call it
// once, while the process has no other thread.
int RunGateway(const Options& options);

}  // namespace gateway

#endif  // QORN_GATEWAY_PROGRAM_H_
