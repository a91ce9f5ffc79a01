#ifndef QORN_GATEWAY_HOST_DATABASE_EXAMINATION_H_
#define QORN_GATEWAY_HOST_DATABASE_EXAMINATION_H_

#include <cstdint>
#include <string>
#include <vector>

#include "gateway/host/finding.h"

namespace gateway {

struct StoredUser {
  std::string uuid;
  std::string id;
  bool has_guid = false;
  bool has_access_token = false;
  bool has_refresh_token = false;
};

// What the database holds.
struct Stored {
  bool read = false;  // whether the other members are complete
  std::vector<StoredUser> users;
  int64_t latest_stamp = 0;  // seconds since 1970; 0 if no user has one
  size_t friends = 0;
  size_t friends_without_user = 0;
};

// Examines folder and file, and reads the content. Writes nothing: it keeps no lock, makes no
// journal and rolls nothing back. Waits at most two seconds for a locked database.
Findings ExamineDatabase(const std::string& path, Stored* stored);

// Examines the bytes of a database file.
Findings ExamineDatabaseImage(const std::string& image, Stored* stored);

// What ExamineDatabase does, as far as it takes no time: does not read a large database whole, and
// does not wait for a locked one.
Findings ExamineDatabaseQuickly(const std::string& path);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_DATABASE_EXAMINATION_H_
