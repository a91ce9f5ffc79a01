// What a program does to itself before it starts: standard streams, signals' actions and locale.
#ifndef QORN_GATEWAY_PROCESS_STANDARD_STREAMS_H_
#define QORN_GATEWAY_PROCESS_STANDARD_STREAMS_H_

namespace gateway {

// Makes sure that standard input, output and error are open, that a closed pipe is an error and no
// signal, and that characters are UTF-8. Call it before any thread is started: all of it belongs to
// the whole process.
void PrepareProcess();

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_STANDARD_STREAMS_H_
