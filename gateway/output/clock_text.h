// Times as text.
#ifndef QORN_GATEWAY_OUTPUT_CLOCK_TEXT_H_
#define QORN_GATEWAY_OUTPUT_CLOCK_TEXT_H_

#include <ctime>
#include <string>

namespace gateway {

// The present: "2026-01-31 08:00:00", in local time, for people.
std::string LocalTime();

// The present: "2026-01-31T07:00:00.123Z" (RFC 3339), for machines.
std::string UtcTime();

// "2026-01-31T07:00:00Z".
std::string UtcText(std::time_t time);

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_CLOCK_TEXT_H_
