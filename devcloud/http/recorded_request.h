#ifndef QORN_DEVCLOUD_HTTP_RECORDED_REQUEST_H_
#define QORN_DEVCLOUD_HTTP_RECORDED_REQUEST_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace devcloud {

// One request as it came in, and what went out for it.
struct RecordedRequest {
  std::string raw;  // head and body byte for byte, taken before anything was parsed
  // Empty for a request that is not HTTP.
  std::string method;
  std::string target;
  std::string body;  // without the framing of a chunked body
  bool tls = false;
  std::uint16_t port = 0;                 // the cloud's port that it came to
  std::vector<std::string> header_lines;  // in the order of the wire, without their line ends

  std::uint64_t number = 0;  // from 1 on, never used twice; 0 for a request that is not kept
  std::chrono::system_clock::time_point time;  // of its last byte, by the cloud's clock
  // The bytes of the answer, from before they go out; without those that a fault cut off. Null
  // while there is none.
  std::optional<std::string> answer;
  std::string fault;  // the kind of the fault that it met; "" without one
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_RECORDED_REQUEST_H_
