#include "bench/memory_disk.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

namespace bench {

using Kind = DiskChange::Kind;

struct MemoryDisk::Node {
  std::string name;  // "" for a temporary file
  int number = 0;
  std::string data;
  bool syncs_folder = false;  // with its first sync
};

// In memory that SQLite allocates.
struct MemoryDisk::File {
  sqlite3_file base;
  MemoryDisk* disk;
  std::shared_ptr<Node> node;

  void Tell(Kind kind, std::int64_t at = 0, std::string data = {}) const {
    if (!node->name.empty()) disk->Tell({kind, node->number, node->name, at, std::move(data)});
  }
};

// SQLite's names and shapes.
struct MemoryDisk::Methods {
  static MemoryDisk* Disk(sqlite3_vfs* vfs) { return static_cast<MemoryDisk*>(vfs->pAppData); }
  static File& At(sqlite3_file* file) { return *reinterpret_cast<File*>(file); }

  static int Open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* out);
  static int Delete(sqlite3_vfs* vfs, const char* name, int sync_folder);
  static int Access(sqlite3_vfs* vfs, const char* name, int flags, int* result);
  static int FullPathname(sqlite3_vfs* vfs, const char* name, int size, char* out);

  static int Close(sqlite3_file* file);
  static int Read(sqlite3_file* file, void* out, int size, sqlite3_int64 at);
  static int Write(sqlite3_file* file, const void* data, int size, sqlite3_int64 at);
  static int Truncate(sqlite3_file* file, sqlite3_int64 size);
  static int Sync(sqlite3_file* file, int flags);
  static int FileSize(sqlite3_file* file, sqlite3_int64* size);
  static int Lock(sqlite3_file* /*file*/, int /*level*/) { return SQLITE_OK; }
  static int CheckReservedLock(sqlite3_file* file, int* result);
  static int FileControl(sqlite3_file* /*file*/, int /*what*/, void* /*argument*/) {
    return SQLITE_NOTFOUND;
  }
  // As of SQLite's unix VFS.
  static int SectorSize(sqlite3_file* /*file*/) { return 4096; }
  static int Characteristics(sqlite3_file* /*file*/) { return SQLITE_IOCAP_POWERSAFE_OVERWRITE; }

  static const sqlite3_io_methods kFile;
};

const sqlite3_io_methods MemoryDisk::Methods::kFile = {1,
                                                       &Close,
                                                       &Read,
                                                       &Write,
                                                       &Truncate,
                                                       &Sync,
                                                       &FileSize,
                                                       &Lock,
                                                       &Lock,
                                                       &CheckReservedLock,
                                                       &FileControl,
                                                       &SectorSize,
                                                       &Characteristics,
                                                       nullptr,
                                                       nullptr,
                                                       nullptr,
                                                       nullptr,
                                                       nullptr,
                                                       nullptr};

int MemoryDisk::Methods::Open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags,
                              int* out) {
  file->pMethods = nullptr;
  MemoryDisk* const disk = Disk(vfs);
  const std::string path = name == nullptr ? "" : name;
  const auto found = disk->nodes_.find(path);
  std::shared_ptr<Node> node;
  if (found != disk->nodes_.end()) {
    node = found->second;
  } else {
    if ((flags & SQLITE_OPEN_CREATE) == 0) return SQLITE_CANTOPEN;
    node = std::make_shared<Node>();
    node->name = path;
    node->number = ++disk->made_;
    node->syncs_folder = (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0;
    if (!path.empty()) {
      disk->Tell({Kind::kCreate, node->number, path});
      disk->nodes_[path] = node;
    }
  }
  new (file) File{{&kFile}, disk, std::move(node)};
  if (out != nullptr) *out = flags;
  return SQLITE_OK;
}

int MemoryDisk::Methods::Delete(sqlite3_vfs* vfs, const char* name, int sync_folder) {
  MemoryDisk* const disk = Disk(vfs);
  const auto found = disk->nodes_.find(name);
  if (found == disk->nodes_.end()) return SQLITE_IOERR_DELETE_NOENT;
  disk->Tell({Kind::kDelete, found->second->number, name});
  disk->nodes_.erase(found);
  if (sync_folder != 0) disk->Tell({Kind::kSyncFolder, 0, ""});
  return SQLITE_OK;
}

// An empty file counts as none, as it does in SQLite's unix VFS.
int MemoryDisk::Methods::Access(sqlite3_vfs* vfs, const char* name, int /*flags*/, int* result) {
  const auto found = Disk(vfs)->nodes_.find(name);
  *result = found != Disk(vfs)->nodes_.end() && !found->second->data.empty() ? 1 : 0;
  return SQLITE_OK;
}

int MemoryDisk::Methods::FullPathname(sqlite3_vfs* /*vfs*/, const char* name, int size, char* out) {
  sqlite3_snprintf(size, out, "%s", name);
  return SQLITE_OK;
}

int MemoryDisk::Methods::Close(sqlite3_file* file) {
  At(file).~File();
  return SQLITE_OK;
}

int MemoryDisk::Methods::Read(sqlite3_file* file, void* out, int size, sqlite3_int64 at) {
  const std::string& data = At(file).node->data;
  const auto begin = std::min(static_cast<std::size_t>(at), data.size());
  const std::size_t wanted = static_cast<std::size_t>(size);
  const std::size_t there = std::min(wanted, data.size() - begin);
  std::memcpy(out, data.data() + begin, there);
  if (there == wanted) return SQLITE_OK;
  std::memset(static_cast<char*>(out) + there, 0, wanted - there);
  return SQLITE_IOERR_SHORT_READ;
}

int MemoryDisk::Methods::Write(sqlite3_file* file, const void* data, int size, sqlite3_int64 at) {
  const std::string_view text(static_cast<const char*>(data), static_cast<std::size_t>(size));
  At(file).Tell(Kind::kWrite, at, std::string(text));
  Overwrite(static_cast<std::size_t>(at), text, &At(file).node->data);
  return SQLITE_OK;
}

int MemoryDisk::Methods::Truncate(sqlite3_file* file, sqlite3_int64 size) {
  At(file).Tell(Kind::kTruncate, size);
  At(file).node->data.resize(static_cast<std::size_t>(size));
  return SQLITE_OK;
}

int MemoryDisk::Methods::Sync(sqlite3_file* file, int /*flags*/) {
  File& synced = At(file);
  synced.Tell(Kind::kSync);
  if (synced.node->syncs_folder) synced.disk->Tell({Kind::kSyncFolder, 0, ""});
  synced.node->syncs_folder = false;
  return SQLITE_OK;
}

int MemoryDisk::Methods::FileSize(sqlite3_file* file, sqlite3_int64* size) {
  *size = static_cast<sqlite3_int64>(At(file).node->data.size());
  return SQLITE_OK;
}

int MemoryDisk::Methods::CheckReservedLock(sqlite3_file* /*file*/, int* result) {
  *result = 0;
  return SQLITE_OK;
}

MemoryDisk::MemoryDisk() : usual_(sqlite3_vfs_find(nullptr)), vfs_(*usual_) {
  vfs_.iVersion = 2;
  vfs_.szOsFile = static_cast<int>(sizeof(File));
  vfs_.zName = "qorn-memory-disk";
  vfs_.pNext = nullptr;
  vfs_.pAppData = this;
  vfs_.xOpen = &Methods::Open;
  vfs_.xDelete = &Methods::Delete;
  vfs_.xAccess = &Methods::Access;
  vfs_.xFullPathname = &Methods::FullPathname;
  sqlite3_vfs_register(&vfs_, 1);
}

MemoryDisk::~MemoryDisk() {
  sqlite3_vfs_unregister(&vfs_);
  sqlite3_vfs_register(usual_, 1);
}

void MemoryDisk::Copy(const std::string& from, const std::string& to) {
  const auto found = nodes_.find(from);
  if (found == nodes_.end()) return;
  nodes_[to] = std::make_shared<Node>(Node{to, ++made_, found->second->data});
}

void MemoryDisk::SetFiles(const Files& files) {
  nodes_.clear();
  for (const auto& [name, data] : files) {
    nodes_[name] = std::make_shared<Node>(Node{name, ++made_, data});
  }
}

void Overwrite(std::size_t at, std::string_view text, std::string* data) {
  data->resize(std::max(data->size(), at + text.size()));
  data->replace(at, text.size(), text);
}

}  // namespace bench
