#ifndef QORN_GATEWAY_HOST_DATABASE_EXAMINATION_H_
#define QORN_GATEWAY_HOST_DATABASE_EXAMINATION_H_

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
  bool read = false;  // the rest is complete
  std::vector<StoredUser> users;
  size_t friends = 0;
  size_t friends_without_user = 0;
};

// Examines folder and file and reads the content, without a write of any kind: no lock that is
// kept, no journal, no roll-back. A database that is locked is waited for, for two seconds.
Findings ExamineDatabase(const std::string& path, Stored* stored);

// Examines folder and file in the same way, and of the content what can be seen at once: a large
// database is not read whole, a locked one is not waited for.
Findings GlanceAtDatabase(const std::string& path);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_DATABASE_EXAMINATION_H_
