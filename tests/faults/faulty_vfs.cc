#include "tests/faults/faulty_vfs.h"

#include <unistd.h>

#include <cstddef>
#include <utility>

namespace faults {
namespace {

// One test of a process uses SQLite at a time; the store's lock orders its threads.
FileFault g_fault;
int g_calls_left = 0;  // 0: no fault is set
bool g_reached = false;
std::function<void()> g_delay;
thread_local bool g_shorten = false;  // the next read or write of the system

struct FaultyFile {
  sqlite3_file base;
  sqlite3_file* real;  // In the memory behind this.
};

sqlite3_file* Real(sqlite3_file* file) { return reinterpret_cast<FaultyFile*>(file)->real; }
sqlite3_vfs* Real(sqlite3_vfs* vfs) { return static_cast<sqlite3_vfs*>(vfs->pAppData); }

// True when this call has the fault.
bool Meets(FileCall call) {
  if (g_calls_left == 0 || call != g_fault.call || --g_calls_left > 0) return false;
  g_calls_left = g_fault.lasting ? 1 : 0;
  g_reached = true;
  g_shorten = g_fault.kind == FaultKind::kShortened;
  if (g_fault.kind == FaultKind::kDelayed || g_fault.kind == FaultKind::kBusy) g_delay();
  return g_fault.kind != FaultKind::kShortened && g_fault.kind != FaultKind::kDelayed;
}

// Passes a call on unless it has the fault.
template <typename Pass>
int Do(FileCall call, int error, Pass pass) {
  if (Meets(call)) return g_fault.kind == FaultKind::kBusy ? SQLITE_BUSY : error;
  return pass();
}

// A method of files that only has to be passed on.
template <auto method, typename... Parameters>
int Pass(sqlite3_file* file, Parameters... parameters) {
  sqlite3_file* const real = Real(file);
  return (real->pMethods->*method)(real, parameters...);
}

int Write(sqlite3_file* file, const void* data, int size, sqlite3_int64 offset) {
  sqlite3_file* const real = Real(file);
  if (!Meets(FileCall::kWrite)) return real->pMethods->xWrite(real, data, size, offset);
  if (g_fault.kind != FaultKind::kFull) return SQLITE_IOERR_WRITE;
  real->pMethods->xWrite(real, data, size / 2, offset);
  return SQLITE_FULL;
}

template <FileCall call, int error, auto method, typename... Parameters>
int Fault(sqlite3_file* file, Parameters... parameters) {
  return Do(call, error, [&] { return Pass<method>(file, parameters...); });
}

using M = sqlite3_io_methods;
const sqlite3_io_methods kMethods = {
    1,
    &Pass<&M::xClose>,
    &Fault<FileCall::kRead, SQLITE_IOERR_READ, &M::xRead, void*, int, sqlite3_int64>,
    &Write,
    &Fault<FileCall::kTruncate, SQLITE_IOERR_TRUNCATE, &M::xTruncate, sqlite3_int64>,
    &Fault<FileCall::kSync, SQLITE_IOERR_FSYNC, &M::xSync, int>,
    &Fault<FileCall::kAccess, SQLITE_IOERR_FSTAT, &M::xFileSize, sqlite3_int64*>,
    &Fault<FileCall::kLock, SQLITE_IOERR_LOCK, &M::xLock, int>,
    &Pass<&M::xUnlock, int>,
    &Fault<FileCall::kLock, SQLITE_IOERR_CHECKRESERVEDLOCK, &M::xCheckReservedLock, int*>,
    &Pass<&M::xFileControl, int, void*>,
    &Pass<&M::xSectorSize>,
    &Pass<&M::xDeviceCharacteristics>,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr};

int Open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* out_flags) {
  auto* const faulty = reinterpret_cast<FaultyFile*>(file);
  faulty->base.pMethods = nullptr;
  faulty->real = reinterpret_cast<sqlite3_file*>(faulty + 1);
  const int result = Do(FileCall::kOpen, SQLITE_CANTOPEN, [&] {
    return Real(vfs)->xOpen(Real(vfs), name, faulty->real, flags, out_flags);
  });
  if (result == SQLITE_OK) faulty->base.pMethods = &kMethods;
  return result;
}

int Delete(sqlite3_vfs* vfs, const char* name, int sync) {
  return Do(FileCall::kDelete, SQLITE_IOERR_DELETE,
            [&] { return Real(vfs)->xDelete(Real(vfs), name, sync); });
}

int Access(sqlite3_vfs* vfs, const char* name, int flags, int* result) {
  return Do(FileCall::kAccess, SQLITE_IOERR_ACCESS,
            [&] { return Real(vfs)->xAccess(Real(vfs), name, flags, result); });
}

size_t Shorten(size_t size) {
  return std::exchange(g_shorten, false) && size > 1 ? size / 2 : size;
}
ssize_t ReadPartAt(int fd, void* data, size_t size, off64_t offset) {
  return pread64(fd, data, Shorten(size), offset);
}
ssize_t WritePartAt(int fd, const void* data, size_t size, off64_t offset) {
  return pwrite64(fd, data, Shorten(size), offset);
}

// Which of them SQLite uses depends on how it was built. Null gives it the system's back.
void ReplaceSystemCalls(sqlite3_vfs* vfs, bool replace) {
  const std::pair<const char*, void (*)()> calls[] = {
      {"pread", reinterpret_cast<void (*)()>(&ReadPartAt)},
      {"pwrite", reinterpret_cast<void (*)()>(&WritePartAt)},
      {"pread64", reinterpret_cast<void (*)()>(&ReadPartAt)},
      {"pwrite64", reinterpret_cast<void (*)()>(&WritePartAt)}};
  for (const auto& [name, call] : calls) {
    if (vfs->xGetSystemCall(vfs, name) == nullptr) continue;  // This SQLite does not use it.
    vfs->xSetSystemCall(vfs, name, replace ? call : nullptr);
  }
}

}  // namespace

std::vector<FileFault> AllFileFaults() {
  using C = FileCall;
  std::vector<FileFault> all = {
      {C::kRead, FaultKind::kShortened, false},  {C::kRead, FaultKind::kShortened, true},
      {C::kWrite, FaultKind::kShortened, false}, {C::kWrite, FaultKind::kShortened, true},
      {C::kWrite, FaultKind::kFull, false},      {C::kWrite, FaultKind::kFull, true},
      {C::kLock, FaultKind::kBusy, false},       {C::kLock, FaultKind::kBusy, true}};
  for (const FileCall call :
       {C::kOpen, C::kRead, C::kWrite, C::kSync, C::kTruncate, C::kLock, C::kDelete, C::kAccess}) {
    all.push_back({call, FaultKind::kFails, false});
    all.push_back({call, FaultKind::kFails, true});
    all.push_back({call, FaultKind::kDelayed, false});
  }
  return all;
}

FaultyVfs::FaultyVfs() : real_(sqlite3_vfs_find(nullptr)), vfs_(*real_) {
  vfs_.iVersion = 2;
  vfs_.szOsFile = static_cast<int>(sizeof(FaultyFile)) + real_->szOsFile;
  vfs_.zName = "qorn-faulty";
  vfs_.pNext = nullptr;
  vfs_.pAppData = real_;
  vfs_.xOpen = &Open;
  vfs_.xDelete = &Delete;
  vfs_.xAccess = &Access;
  ReplaceSystemCalls(real_, true);
  sqlite3_vfs_register(&vfs_, 1);
}

FaultyVfs::~FaultyVfs() {
  sqlite3_vfs_unregister(&vfs_);
  sqlite3_vfs_register(real_, 1);
  ReplaceSystemCalls(real_, false);
}

void FaultyVfs::Set(const FileFault& fault, int nth, std::function<void()> delay) {
  g_fault = fault;
  g_delay = std::move(delay);
  g_reached = false;
  g_calls_left = nth;
}

bool FaultyVfs::Clear() {
  g_calls_left = 0;
  g_shorten = false;
  return g_reached;
}

}  // namespace faults
