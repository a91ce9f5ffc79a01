#include "tests/faults/faulty_vfs.h"

#include <cstddef>
#include <utility>

namespace faults {
namespace {

// One test of a process uses SQLite at a time; the store's lock orders its threads.
FileFault g_fault;
int g_calls_left = 0;  // 0: no fault is set
bool g_reached = false;
std::function<void()> g_delay;

struct FaultyFile {
  sqlite3_file base;
  sqlite3_file* real;  // In the memory behind this.
};

sqlite3_file* Real(sqlite3_file* file) { return reinterpret_cast<FaultyFile*>(file)->real; }
sqlite3_vfs* Real(sqlite3_vfs* vfs) { return static_cast<sqlite3_vfs*>(vfs->pAppData); }

// Passes a call on unless it has the fault.
template <typename Pass>
int Do(FileCall call, int error, Pass pass) {
  if (g_calls_left == 0 || call != g_fault.call || --g_calls_left > 0) return pass();
  g_calls_left = g_fault.lasting ? 1 : 0;
  g_reached = true;
  if (g_fault.kind == FaultKind::kFails) return error;
  g_delay();
  return g_fault.kind == FaultKind::kBusy ? SQLITE_BUSY : pass();
}

// A method of files that only has to be passed on.
template <auto method, typename... Parameters>
int Pass(sqlite3_file* file, Parameters... parameters) {
  sqlite3_file* const real = Real(file);
  return (real->pMethods->*method)(real, parameters...);
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
    &Fault<FileCall::kWrite, SQLITE_IOERR_WRITE, &M::xWrite, const void*, int, sqlite3_int64>,
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

}  // namespace

std::vector<FileFault> AllFileFaults() {
  using C = FileCall;
  std::vector<FileFault> all = {{C::kLock, FaultKind::kBusy, false},
                                {C::kLock, FaultKind::kBusy, true}};
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
  sqlite3_vfs_register(&vfs_, 1);
}

FaultyVfs::~FaultyVfs() {
  sqlite3_vfs_unregister(&vfs_);
  sqlite3_vfs_register(real_, 1);
}

void FaultyVfs::Set(const FileFault& fault, int nth, std::function<void()> delay) {
  g_fault = fault;
  g_delay = std::move(delay);
  g_reached = false;
  g_calls_left = nth;
}

bool FaultyVfs::Clear() {
  g_calls_left = 0;
  return g_reached;
}

}  // namespace faults
