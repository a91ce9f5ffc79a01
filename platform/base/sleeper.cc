#include "base/sleeper.h"

#include <memory>

#include "base/clock.h"

namespace base {

// The sleeping threads of the process. Lock order: this lock first, then a sleeper's own.
struct SleeperList {
  Lock lock;
  ConditionVariable grown;
  Sleeper* first GUARDED_BY(lock) = nullptr;

  static SleeperList& Get() {
    // Never destroyed: threads may sleep until the process ends.
    static SleeperList* const list = new SleeperList;
    return *list;
  }

  void Add(Sleeper* sleeper) {
    AutoLock hold(lock);
    sleeper->next_ = first;
    first = sleeper;
    grown.NotifyAll();
  }

  void Remove(Sleeper* sleeper) {
    AutoLock hold(lock);
    Sleeper** place = &first;
    while (*place != sleeper) place = &(*place)->next_;
    *place = sleeper->next_;
  }

  int CountArmed() EXCLUSIVE_LOCKS_REQUIRED(lock) {
    const TimeDelta uptime = Clock::Get()->Uptime();
    int count = 0;
    for (Sleeper* s = first; s != nullptr; s = s->next_) count += s->IsArmed(uptime) ? 1 : 0;
    return count;
  }
};

void Sleeper::SleepUntil(std::optional<TimeDelta> deadline) {
  {
    AutoLock hold(lock_);
    deadline_ = deadline;
  }
  // Listed while it waits, and not under lock_: the list's lock comes first.
  SleeperList::Get().Add(this);
  WaitUntilDue();
  SleeperList::Get().Remove(this);
}

void Sleeper::Wake() {
  AutoLock hold(lock_);
  woken_ = true;
  changed_.NotifyAll();
}

void Sleeper::RecheckDeadlines() {
  SleeperList& list = SleeperList::Get();
  AutoLock hold(list.lock);
  for (Sleeper* sleeper = list.first; sleeper != nullptr; sleeper = sleeper->next_) {
    AutoLock hold_sleeper(sleeper->lock_);
    sleeper->changed_.NotifyAll();
  }
}

void Sleeper::WaitForSleepers(int count) {
  SleeperList& list = SleeperList::Get();
  AutoLock hold(list.lock);
  while (list.CountArmed() < count) list.grown.Wait(list.lock);
}

void Sleeper::WaitUntilDue() {
  AutoLock hold(lock_);
  while (!woken_) {
    if (!deadline_) {
      changed_.Wait(lock_);
      continue;
    }
    // Read anew each time, because a test may replace the clock during the wait.
    const std::shared_ptr<const Clock> clock = Clock::Get();
    if (clock->Uptime() >= *deadline_) break;
    clock->WaitUntil(lock_, changed_, *deadline_);
  }
  woken_ = false;
}

bool Sleeper::IsArmed(TimeDelta uptime) {
  AutoLock hold(lock_);
  return !woken_ && deadline_ && *deadline_ > uptime;
}

}  // namespace base
