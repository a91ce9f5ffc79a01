#ifndef QORN_PLATFORM_BASE_PICKLE_H_
#define QORN_PLATFORM_BASE_PICKLE_H_

#include <cstddef>
#include <string>
#include <vector>

// A sequence of values in one block of bytes, all numbers in the machine's byte order: 4 bytes with
// the size of what follows, then the fields, each padded with zeros to a multiple of 4 bytes. An
// integer takes 4 bytes; a string is its length as an integer, then its bytes. Not thread-safe.
class Pickle {
 public:
  // Empty: a size of 0 and no field.
  Pickle();
  // Borrows `data`, for reading only. Bytes beyond the stated size are ignored. If the size is
  // missing or exceeds `data_size`, there is nothing to read.
  Pickle(const char* data, size_t data_size);
  // A copy owns its bytes.
  Pickle(const Pickle& other);
  // Like the copy.
  Pickle& operator=(const Pickle& other);
  ~Pickle();

  // False, with nothing written, if the bytes are borrowed or their size would exceed an int.
  bool WriteString(const std::string& value);
  // Like WriteString.
  bool WriteInt(int value);

  // The bytes, including the leading size; null and 0 if borrowed bytes hold no pickle.
  const char* data() const { return owned_.empty() ? borrowed_ : owned_.data(); }
  // Of data(), in bytes.
  size_t size() const { return owned_.empty() ? borrowed_size_ : owned_.size(); }

 private:
  bool WriteField(const char* bytes, size_t size);

  std::vector<char> owned_;  // Empty if the bytes are borrowed.
  const char* borrowed_ = nullptr;
  size_t borrowed_size_ = 0;
};

// Reads a pickle's fields in order. Borrows the pickle's bytes. A read that fails returns false,
// leaves the output untouched and makes all later reads fail.
class PickleIterator {
 public:
  // Starts at the first field.
  explicit PickleIterator(const Pickle& pickle);

  // The next field as a string.
  bool ReadString(std::string* value);
  // The next field as an integer.
  bool ReadInt(int* value);

 private:
  const char* Take(size_t size);

  const char* position_;
  size_t remaining_;
};

#endif  // QORN_PLATFORM_BASE_PICKLE_H_
