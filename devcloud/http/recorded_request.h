#ifndef QORN_DEVCLOUD_HTTP_RECORDED_REQUEST_H_
#define QORN_DEVCLOUD_HTTP_RECORDED_REQUEST_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace devcloud {

// One request as received, and what was sent for it.
struct RecordedRequest {
  std::string raw;  // head and body byte for byte, kept before parsing
  // Both empty if the bytes are not an HTTP request.
  std::string method;
  std::string target;
  std::string body;  // without chunked framing
  bool tls = false;
  std::uint16_t port = 0;                 // the cloud's port that received it
  std::vector<std::string> header_lines;  // in wire order, without line ends

  std::uint64_t number = 0;  // from 1; 0 for a request that is not kept
  std::uint64_t run = 0;     // how often the log had started over before: numbers begin again then
  std::string user;          // the ID of the user that it is for; "" if it names none
  std::chrono::system_clock::time_point time;  // when its last byte arrived, by the cloud's clock
  // The answer's bytes, set just before they are sent, without those that a fault cut off. Null
  // until then.
  std::optional<std::string> answer;
  std::string fault;  // the kind of the fault that applied; "" if none
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_RECORDED_REQUEST_H_
