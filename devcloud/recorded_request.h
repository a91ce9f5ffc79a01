#ifndef QORN_DEVCLOUD_RECORDED_REQUEST_H_
#define QORN_DEVCLOUD_RECORDED_REQUEST_H_

#include <string>
#include <vector>

namespace devcloud {

// One request as it came in.
struct RecordedRequest {
  std::string raw;  // head and body byte for byte, taken before anything was parsed
  // Empty for a request that is not HTTP.
  std::string method;
  std::string target;
  std::string body;  // without the framing of a chunked body
  bool tls = false;
  std::vector<std::string> header_lines;  // in the order of the wire, without their line ends
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_RECORDED_REQUEST_H_
