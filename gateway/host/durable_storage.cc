#include "gateway/host/durable_storage.h"

#include <sqlite3.h>

#include <string_view>

namespace gateway {
namespace {

sqlite3_vfs* g_usual = nullptr;  // The default VFS before the call, owned by SQLite.

// SQLite's unix VFS syncs the folder of a deleted file when it is asked to; with
// `synchronous = FULL`, the default, SQLite does not ask.
int DeleteDurably(sqlite3_vfs* /*vfs*/, const char* name, int sync_folder) {
  const bool journal = std::string_view(name).ends_with("-journal");
  return g_usual->xDelete(g_usual, name, journal ? 1 : sync_folder);
}

}  // namespace

bool UseDurableStorage() {
  // A copy, since the methods of a VFS find their data in pAppData, which is copied with them.
  static sqlite3_vfs durable;
  sqlite3_vfs* const usual = sqlite3_vfs_find(nullptr);
  if (usual == nullptr) return false;
  if (usual == &durable) return true;
  g_usual = usual;
  durable = *usual;
  durable.zName = "qorn-durable";
  durable.pNext = nullptr;
  durable.xDelete = &DeleteDurably;
  return sqlite3_vfs_register(&durable, 1) == SQLITE_OK;
}

}  // namespace gateway
