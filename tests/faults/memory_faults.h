// Allocations and thread starts that fail: in a program that links memory_faults.cc, C++, SQLite
// and libcurl allocate through it.
#ifndef QORN_TESTS_FAULTS_MEMORY_FAULTS_H_
#define QORN_TESTS_FAULTS_MEMORY_FAULTS_H_

namespace faults {

// Whose allocations fail: the thread that calls UseMemoryAs, or those that it starts from then on.
enum class Side { kNone, kCaller, kStarted };
void UseMemoryAs(Side side);

// From here on the zone is UTC by name. The system's takes memory, some of it kept, whenever the C
// library looks whether it has changed.
void UseNamedZone();

// Makes the Nth allocation of that side fail, or the start of a thread if that is what comes Nth;
// `lasting`: and all after it. Until EndMemoryFault, which tells how many came after the Nth, or -1
// if it did not come to that one. What is allocated in between counts as held until it is freed.
void StartMemoryFault(Side side, int nth, bool lasting);
int EndMemoryFault();

// How many allocations of faults so far are still held. Forgets them.
int TakeHeldAllocations();
// The XML library leaks what it has read of a document when an allocation fails. This is the most
// that the cloud's answers here come to.
inline constexpr int kLostByXml = 14;

// For the test's own code on a thread whose allocations fail.
class MemoryIsBack {
 public:
  MemoryIsBack();
  ~MemoryIsBack();
  MemoryIsBack(const MemoryIsBack&) = delete;
  MemoryIsBack& operator=(const MemoryIsBack&) = delete;

 private:
  const Side before_;
};

}  // namespace faults

#endif  // QORN_TESTS_FAULTS_MEMORY_FAULTS_H_
