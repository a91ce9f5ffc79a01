#ifndef QORN_PLATFORM_BASE_PICKLE_H_
#define QORN_PLATFORM_BASE_PICKLE_H_

#include <cstddef>
#include <string>
#include <vector>

// A row of values as bytes, all numbers in the machine's byte order: 4 bytes with the size of what
// follows, then the fields, each padded with zeros to a multiple of 4 bytes. An integer takes 4
// bytes; a string is its length as an integer, then its bytes. Not thread-safe.
class Pickle {
 public:
  // Empty: a size of 0 and no field.
  Pickle();
  // Borrows `data`, for reading only. Bytes behind the stated size are ignored; a size that is
  // missing or reaches beyond `data_size` makes a pickle with nothing to read.
  Pickle(const char* data, size_t data_size);
  // A copy owns its bytes.
  Pickle(const Pickle& other);
  // Like the copy.
  Pickle& operator=(const Pickle& other);
  ~Pickle();

  // False, nothing written, for a borrowed pickle and when the size would no longer fit an int.
  bool WriteString(const std::string& value);
  // Like WriteString.
  bool WriteInt(int value);

  // The bytes, the leading size included; null and 0 for borrowed bytes that hold no pickle.
  const char* data() const { return owned_.empty() ? borrowed_ : owned_.data(); }
  // Of data(), in bytes.
  size_t size() const { return owned_.empty() ? borrowed_size_ : owned_.size(); }

 private:
  bool WriteField(const char* bytes, size_t size);

  std::vector<char> owned_;  // Empty if the bytes are borrowed.
  const char* borrowed_ = nullptr;
  size_t borrowed_size_ = 0;
};

// Reads a pickle's fields in order. It borrows the pickle's bytes. A read that fails answers false,
// leaves the output alone and makes all later reads fail.
class PickleIterator {
 public:
  // Begins at the first field.
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
