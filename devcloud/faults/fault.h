// faults/ makes the cloud fail on demand: what a fault is, the list of those still to come, their
// JSON form and the bad replies they cause.
#ifndef QORN_DEVCLOUD_FAULTS_FAULT_H_
#define QORN_DEVCLOUD_FAULTS_FAULT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace devcloud {

// One way in which the cloud answers badly. Faults are tried in the order in which they were added,
// and the first whose path fits is used; the page and the "/api/" paths never meet a fault.
// The request is recorded in any case. It changes accounts and registrations only where the kind
// says that the normal answer is made.
struct Fault {
  enum class Kind {
    kStatus,         // `status` with `body` (a short default when empty) and `header_lines`
    kBody,           // status 200 with exactly `body`, `content_type` and `header_lines`; a body
                     // shorter than `bytes` is filled up with the letter x
    kRaw,            // the bytes of `body` as they are, then an orderly close
    kResetAfter,     // the normal answer is made, cut after `bytes` bytes by a TCP reset
    kTruncateAfter,  // the normal answer is made, cut after `bytes` bytes by an orderly close
    kStall,          // nothing until the faults are cleared: then the normal answer follows
    kDrip,           // the normal answer, one byte in each write
    kRedirect,       // `status` (302 when left at 0) with `location` as its Location line; an empty
                // location names the request's own target, so that `times` is the number of hops
  };

  std::string path = "*";  // the exact path, without a query; "*" fits every path
  int times = 1;  // number of requests that meet the fault; -1: until the faults are cleared
  Kind kind = Kind::kStatus;
  int status = 0;  // kStatus: 500 when left at 0; 200 to 599
  std::string content_type;
  std::string body;
  std::size_t bytes = 0;
  std::string location;
  std::vector<std::string> header_lines;  // "Name: value", sent as they are
  std::uint64_t number = 0;               // given by the list of faults, from 1 on
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_FAULTS_FAULT_H_
