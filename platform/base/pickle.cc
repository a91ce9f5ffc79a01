#include "base/pickle.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

// The size of the leading word and of an integer field.
constexpr size_t kWordSize = sizeof(int32_t);
// Reserved at construction; most events fit, and are written without another allocation.
constexpr size_t kUsualSize = 192;
constexpr size_t kLargestPayload = std::numeric_limits<int32_t>::max() - kWordSize;

size_t PaddedSize(size_t size) { return (size + kWordSize - 1) / kWordSize * kWordSize; }

uint32_t ReadWord(const char* bytes) {
  uint32_t word = 0;
  std::memcpy(&word, bytes, sizeof(word));
  return word;
}

}  // namespace

Pickle::Pickle() {
  owned_.reserve(kUsualSize);
  owned_.resize(kWordSize, '\0');
}

Pickle::Pickle(const char* data, size_t data_size) {
  if (data == nullptr || data_size < kWordSize) return;
  const size_t payload = ReadWord(data);
  if (payload > data_size - kWordSize) return;
  borrowed_ = data;
  borrowed_size_ = kWordSize + payload;
}

Pickle::Pickle(const Pickle& other) : Pickle() { *this = other; }

Pickle& Pickle::operator=(const Pickle& other) {
  if (this == &other) return *this;
  if (other.size() == 0) {
    owned_.assign(kWordSize, '\0');
  } else {
    owned_.assign(other.data(), other.data() + other.size());
  }
  borrowed_ = nullptr;
  borrowed_size_ = 0;
  return *this;
}

Pickle::~Pickle() = default;

bool Pickle::WriteString(const std::string& value) {
  if (owned_.empty() || value.size() > kLargestPayload ||
      PaddedSize(value.size()) + kWordSize > kLargestPayload - (owned_.size() - kWordSize)) {
    return false;
  }
  return WriteInt(static_cast<int>(value.size())) && WriteField(value.data(), value.size());
}

bool Pickle::WriteInt(int value) {
  return WriteField(reinterpret_cast<const char*>(&value), sizeof(value));
}

bool Pickle::WriteField(const char* bytes, size_t size) {
  if (owned_.empty() || PaddedSize(size) > kLargestPayload - (owned_.size() - kWordSize)) {
    return false;
  }
  owned_.insert(owned_.end(), bytes, bytes + size);
  owned_.resize(PaddedSize(owned_.size()), '\0');
  const uint32_t payload = static_cast<uint32_t>(owned_.size() - kWordSize);
  std::memcpy(owned_.data(), &payload, sizeof(payload));
  return true;
}

PickleIterator::PickleIterator(const Pickle& pickle)
    : position_(pickle.data() + std::min(pickle.size(), kWordSize)),
      remaining_(pickle.size() - std::min(pickle.size(), kWordSize)) {}

bool PickleIterator::ReadInt(int* value) {
  const char* bytes = Take(sizeof(*value));
  if (bytes == nullptr) return false;
  std::memcpy(value, bytes, sizeof(*value));
  return true;
}

bool PickleIterator::ReadString(std::string* value) {
  int length = 0;
  if (!ReadInt(&length)) return false;
  // A negative length becomes a huge one, which Take refuses.
  const char* bytes = Take(static_cast<size_t>(length));
  if (bytes == nullptr) return false;
  value->assign(bytes, static_cast<size_t>(length));
  return true;
}

const char* PickleIterator::Take(size_t size) {
  if (size > remaining_) {
    remaining_ = 0;
    return nullptr;
  }
  const char* taken = position_;
  // Bytes from elsewhere may lack the padding of the last field.
  const size_t step = std::min(PaddedSize(size), remaining_);
  position_ += step;
  remaining_ -= step;
  return taken;
}
