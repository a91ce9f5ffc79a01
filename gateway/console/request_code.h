// Fetches an authorisation code from the account server, as a person would get one from its page.
#ifndef QORN_GATEWAY_CONSOLE_REQUEST_CODE_H_
#define QORN_GATEWAY_CONSOLE_REQUEST_CODE_H_

#include <functional>
#include <string>

namespace gateway {

// Posts the user to `server_url` + "/authorize" and reads "code" from the JSON answer. Blocks: five
// seconds at most to connect and thirty for all; ends early, within a second, once `stopped`
// answers true. Certificates are not checked, as in the component, which talks to the same server.
// False with one line in `error`, `code` untouched, when there is no code.
bool RequestCode(const std::string& server_url, const std::string& user,
                 const std::function<bool()>& stopped, std::string* code, std::string* error);

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_REQUEST_CODE_H_
