// The present time as text.
#ifndef QORN_GATEWAY_OUTPUT_CLOCK_TEXT_H_
#define QORN_GATEWAY_OUTPUT_CLOCK_TEXT_H_

#include <string>

namespace gateway {

// "2026-01-31 08:00:00", in local time, for people.
std::string LocalTime();

// "2026-01-31T07:00:00.123Z" (RFC 3339), for machines.
std::string UtcTime();

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_CLOCK_TEXT_H_
