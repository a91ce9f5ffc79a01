// The least that a library with the component's dependencies does until it could serve: loads them,
// starts libcurl, opens the database and makes its tables.
#include <curl/curl.h>
#include <sqlite3.h>
#include <tinyxml.h>
#include <uuid/uuid.h>

#include "bench/raw_database.h"

extern "C" __attribute__((visibility("default"))) int PrepareFloor(const char* database);

int PrepareFloor(const char* database) {
  uuid_t uuid;
  uuid_generate(uuid);  // The dependencies are really there.
  const TiXmlDocument document;
  curl_global_init(CURL_GLOBAL_DEFAULT);
  static bench::RawDatabase* const opened = new bench::RawDatabase(database);
  opened->Run(bench::kCreateUsers);
  opened->Run(bench::kCreateFriends);
  return document.Error() ? 0 : 1;
}
