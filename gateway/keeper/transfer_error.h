// libcurl's code of a transfer that failed: an operation's result does not tell it, its log line
// does, on the thread that called the operation.
#ifndef QORN_GATEWAY_KEEPER_TRANSFER_ERROR_H_
#define QORN_GATEWAY_KEEPER_TRANSFER_ERROR_H_

#include <string>

namespace gateway {

// To be called with each line of the log. Keeps the latest code of this thread.
void NoteTransferError(const std::string& log_line);

// The code since the last call on this thread; 0 for none.
int TakeTransferError();

}  // namespace gateway

#endif  // QORN_GATEWAY_KEEPER_TRANSFER_ERROR_H_
