// The keeper's state between two runs of the program: keeper.json beside the database.
#ifndef QORN_GATEWAY_KEEPER_STATE_FILE_H_
#define QORN_GATEWAY_KEEPER_STATE_FILE_H_

#include <cstdint>
#include <string>

#include "gateway/keeper/schedule.h"

namespace gateway {

// The file holds times of the wall clock, the keeper those of another clock that may begin with
// each start of the machine: `now` is that one's time, `wall_now` the wall clock's, both in
// seconds.
std::string EncodeKeeperState(const keeper::Histories& histories, int64_t now, int64_t wall_now);

// Nothing for a text of another version or that is none. Users whose times have not come yet are
// left out: the clock was or is wrong.
keeper::Histories DecodeKeeperState(const std::string& text, int64_t now, int64_t wall_now);

}  // namespace gateway

#endif  // QORN_GATEWAY_KEEPER_STATE_FILE_H_
