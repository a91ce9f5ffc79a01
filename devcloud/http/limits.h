#ifndef QORN_DEVCLOUD_HTTP_LIMITS_H_
#define QORN_DEVCLOUD_HTTP_LIMITS_H_

namespace devcloud {

// What the gateways' ports bear together. 0: no limit.
struct Limits {
  // Requests are answered at this rate, first in, first out; those that wait keep their connection.
  int requests_per_second = 0;
  // Further connections are left to the kernel. Its queue holds two for each port, and then a
  // client that connects gets no answer.
  int connections = 0;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_LIMITS_H_
