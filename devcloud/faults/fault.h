// faults/ makes the cloud fail on demand: what a fault is, the list of those still to come, their
// JSON form and the bad replies they cause.
#ifndef QORN_DEVCLOUD_FAULTS_FAULT_H_
#define QORN_DEVCLOUD_FAULTS_FAULT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace devcloud {

// One way in which the cloud fails. The first fault in the list whose path and user match a request
// applies to it; no fault applies to the page and the "/api/" paths. The request is recorded in any
// case. It changes accounts and registrations only if the kind makes the normal answer.
struct Fault {
  enum class Kind {
    kStatus,         // `status` with `body` (a short default if empty) and `header_lines`
    kBody,           // status 200 with `body`, `content_type` and `header_lines`; a body shorter
                     // than `bytes` is padded with the letter x
    kRaw,            // the bytes of `body` verbatim, then an orderly close
    kResetAfter,     // the first `bytes` bytes of the normal answer, then a TCP reset
    kTruncateAfter,  // the first `bytes` bytes of the normal answer, then an orderly close
    kStall,          // nothing until the fault is removed, then the normal answer
    kDrip,           // the normal answer, one byte per write
    kRedirect,       // `status` (302 if 0) with a Location line of `location`; an empty location
                     // stands for the request's own target, so that `times` is the number of hops
  };

  // An exact path without a query, or "*" for every path. On the ports for gateways, the path "/"
  // stands before the page.
  std::string path = "*";
  std::string user = "*";  // a user ID, or "*" for every request, whoever it is for
  int times = 1;           // requests that it applies to; -1: all, until it is removed
  Kind kind = Kind::kStatus;
  int status = 0;  // 200 to 599; 0 is 500 for kStatus and 302 for kRedirect
  std::string content_type;
  std::string body;
  std::size_t bytes = 0;
  std::string location;
  std::vector<std::string> header_lines;  // "Name: value", sent verbatim
  std::uint64_t number = 0;               // set by FaultList, from 1
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_FAULTS_FAULT_H_
