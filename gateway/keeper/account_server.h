#ifndef QORN_GATEWAY_KEEPER_ACCOUNT_SERVER_H_
#define QORN_GATEWAY_KEEPER_ACCOUNT_SERVER_H_

#include <atomic>
#include <string>

namespace gateway {

// Whether a plain request to the account server's base URL is answered with a status below 500.
// Takes ten seconds at most, and about one second once `stop` is set.
bool AccountServerAnswers(const std::string& url, const std::atomic<bool>& stop);

}  // namespace gateway

#endif  // QORN_GATEWAY_KEEPER_ACCOUNT_SERVER_H_
