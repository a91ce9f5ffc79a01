#ifndef QORN_DEVCLOUD_TESTS_CLIENT_H_
#define QORN_DEVCLOUD_TESTS_CLIENT_H_

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "devcloud/cloud.h"

namespace devcloud {

// Fails the test when the cloud does not start.
std::unique_ptr<Cloud> StartCloud(const Options& options = {});

struct Exchange {
  int error = 0;  // libcurl's CURLcode
  long status = 0;
  std::string text;               // heads and body
  std::size_t largest_piece = 0;  // of the body
};

// One request, following redirects, without checking certificates. `method` "GET" sends no body.
Exchange Send(const std::string& method, const std::string& url, const std::string& body = "",
              const std::vector<std::string>& header_lines = {});

// A plain connection for bytes of one's own making.
class Connection {
 public:
  // Fails the test when nobody listens.
  explicit Connection(const std::string& url);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void Write(const std::string& bytes);
  // Reads until `end` has come, or the connection has ended when `end` is empty.
  std::string ReadUntil(const std::string& end);

 private:
  int socket_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_TESTS_CLIENT_H_
