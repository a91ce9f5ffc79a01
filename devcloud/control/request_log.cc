#include "devcloud/control/request_log.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace devcloud {
namespace {

constexpr std::size_t kMaxRequests = 10'000;
constexpr std::size_t kMaxBytes = 256u << 20;
constexpr std::size_t kSummaries = 200;
constexpr std::size_t kSummaryBytes = 200;
constexpr std::chrono::seconds kWaitTimeout(10);

std::size_t SizeOf(const RecordedRequest& request) {
  return request.raw.size() + (request.answer ? request.answer->size() : 0);
}

RequestSummary Summarize(const RecordedRequest& request) {
  RequestSummary summary{.number = request.number,
                         .time = request.time,
                         .tls = request.tls,
                         .method = request.method,
                         .target = request.target.substr(0, kSummaryBytes),
                         .request_bytes = request.raw.size(),
                         .user = request.user,
                         .fault = request.fault,
                         .is_answered = request.answer.has_value(),
                         .answer_bytes = 0,
                         .answer_line = ""};
  if (request.answer) {
    const std::size_t line_end = request.answer->find_first_of("\r\n");
    summary.answer_bytes = request.answer->size();
    summary.answer_line = request.answer->substr(0, std::min(line_end, kSummaryBytes));
  }
  return summary;
}

}  // namespace

void RequestLog::Add(RecordedRequest* request) {
  base::AutoLock lock(lock_);
  request->number = ++last_number_;
  request->run = run_;
  entries_.push_back({*request, ++revision_});
  bytes_ += SizeOf(*request);
  ++count_;
  DropOldest();
  added_.NotifyAll();
}

void RequestLog::SetReply(const RecordedRequest& request, const std::string& fault,
                          std::optional<std::string> answer) {
  base::AutoLock lock(lock_);
  if (request.run != run_ || FindEntry(request.number) == nullptr) return;
  Entry& entry = entries_[static_cast<size_t>(request.number - entries_.front().request.number)];
  bytes_ -= SizeOf(entry.request);
  entry.request.fault = fault;
  entry.request.answer = std::move(answer);
  entry.revision = ++revision_;  // open pages fetch the request again
  bytes_ += SizeOf(entry.request);
  DropOldest();
}

void RequestLog::Clear() {
  base::AutoLock lock(lock_);
  // Numbers go on, so that a page tells the requests that follow from those it still shows.
  Empty();
}

void RequestLog::StartOver() {
  base::AutoLock lock(lock_);
  Empty();
  last_number_ = 0;
  ++run_;
  first_revision_ = revision_;
}

std::vector<RecordedRequest> RequestLog::requests() const {
  base::AutoLock lock(lock_);
  std::vector<RecordedRequest> requests;
  requests.reserve(entries_.size());
  for (const Entry& entry : entries_) requests.push_back(entry.request);
  return requests;
}

std::optional<RecordedRequest> RequestLog::Find(std::uint64_t number) const {
  base::AutoLock lock(lock_);
  const Entry* entry = FindEntry(number);
  if (entry == nullptr) return std::nullopt;
  return entry->request;
}

std::uint64_t RequestLog::revision() const {
  base::AutoLock lock(lock_);
  return revision_;
}

RequestChanges RequestLog::ChangesSince(std::uint64_t revision) const {
  base::AutoLock lock(lock_);
  RequestChanges changes{.revision = revision_,
                         .oldest = last_number_ + 1 - entries_.size(),
                         .from_start = revision < first_revision_,
                         .summaries = {}};
  for (std::size_t i = entries_.size() - std::min(entries_.size(), kSummaries); i < entries_.size();
       ++i) {
    if (entries_[i].revision > revision) {
      changes.summaries.push_back(Summarize(entries_[i].request));
    }
  }
  return changes;
}

bool RequestLog::WaitFor(std::size_t count) const {
  const auto deadline = std::chrono::steady_clock::now() + kWaitTimeout;
  base::AutoLock lock(lock_);
  while (count_ < count) {
    const auto left = deadline - std::chrono::steady_clock::now();
    if (left <= left.zero()) return false;
    added_.WaitFor(lock_, std::chrono::ceil<std::chrono::microseconds>(left));
  }
  return true;
}

const RequestLog::Entry* RequestLog::FindEntry(std::uint64_t number) const {
  if (entries_.empty()) return nullptr;
  const std::uint64_t first = entries_.front().request.number;
  return number >= first && number <= last_number_ ? &entries_[static_cast<size_t>(number - first)]
                                                   : nullptr;
}

void RequestLog::Empty() {
  entries_.clear();
  bytes_ = 0;
  count_ = 0;
  ++revision_;
}

void RequestLog::DropOldest() {
  while (entries_.size() > kMaxRequests || bytes_ > kMaxBytes) {
    bytes_ -= SizeOf(entries_.front().request);
    entries_.pop_front();
  }
}

}  // namespace devcloud
