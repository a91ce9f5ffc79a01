#include "gateway/maintenance/archive.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <optional>

namespace gateway {
namespace {

constexpr size_t kBlock = 512;
constexpr char kManifestName[] = "manifest.json";
constexpr char kDatabaseName[] = "account.db";
constexpr size_t kMaxManifestBytes = size_t{64} << 10;

// Of POSIX's ustar format. Numbers are octal text.
struct Header {
  char name[100];
  char mode[8];
  char owner[8];
  char group[8];
  char size[12];
  char time[12];
  char checksum[8];
  char type;
  char link_name[100];
  char magic[6];
  char version[2];
  char owner_name[32];
  char group_name[32];
  char device_major[8];
  char device_minor[8];
  char prefix[155];
  char unused[12];
};
static_assert(sizeof(Header) == kBlock);

template <size_t kSize>
void PutNumber(unsigned long long number, char (&field)[kSize]) {
  snprintf(field, kSize, "%0*llo", static_cast<int>(kSize) - 1, number);
}

size_t Padding(size_t size) { return (kBlock - size % kBlock) % kBlock; }

std::string Member(const char* name, std::time_t time, const std::string& content) {
  Header header{};
  snprintf(header.name, sizeof(header.name), "%s", name);
  PutNumber(0600, header.mode);
  PutNumber(0, header.owner);
  PutNumber(0, header.group);
  PutNumber(content.size(), header.size);
  PutNumber(static_cast<unsigned long long>(time), header.time);
  header.type = '0';
  std::memcpy(header.magic, "ustar", sizeof(header.magic));
  std::memcpy(header.version, "00", sizeof(header.version));
  // The sum of all bytes, with blanks in the place of the sum.
  std::memset(header.checksum, ' ', sizeof(header.checksum));
  unsigned sum = 0;
  for (size_t i = 0; i < kBlock; ++i) sum += reinterpret_cast<const unsigned char*>(&header)[i];
  snprintf(header.checksum, sizeof(header.checksum), "%06o", sum);
  return std::string(reinterpret_cast<const char*>(&header), kBlock) + content +
         std::string(Padding(content.size()), '\0');
}

// Takes the members of an archive one after the other.
class Reader {
 public:
  explicit Reader(const std::string& archive) : archive_(archive) {}

  // The content of the next member. None, with a reason in `error`, if it has another name or does
  // not end within the archive.
  std::optional<std::string> Next(const char* name, size_t max_size, std::string* error) {
    *error = "is cut off";
    if (archive_.size() - position_ < kBlock) return std::nullopt;
    Header header;
    std::memcpy(&header, archive_.data() + position_, kBlock);
    position_ += kBlock;
    unsigned long long stated = 0;
    if (std::strncmp(header.name, name, sizeof(header.name)) != 0 ||
        std::memcmp(header.magic, "ustar", sizeof(header.magic)) != 0 ||
        header.size[sizeof(header.size) - 1] != '\0' ||
        std::sscanf(header.size, "%llo", &stated) != 1 || stated > max_size) {
      *error = "is not a copy that qorn-gateway backup made";
      return std::nullopt;
    }
    const size_t size = static_cast<size_t>(stated);
    if (size + Padding(size) > archive_.size() - position_) return std::nullopt;
    std::string content = archive_.substr(position_, size);
    position_ += size + Padding(size);
    return content;
  }

 private:
  const std::string& archive_;
  size_t position_ = 0;
};

}  // namespace

std::string MakeArchive(const Copy& copy) {
  const std::time_t time = copy.manifest.time;
  return Member(kManifestName, time, EncodeManifest(copy.manifest, copy.database)) +
         Member(kDatabaseName, time, copy.database) + std::string(2 * kBlock, '\0');
}

bool ReadArchive(const std::string& archive, Copy* copy, std::string* error) {
  Reader reader(archive);
  const std::optional<std::string> manifest = reader.Next(kManifestName, kMaxManifestBytes, error);
  if (!manifest || !DecodeManifest(*manifest, &copy->manifest, error)) return false;
  const std::optional<std::string> database = reader.Next(kDatabaseName, kMaxArchiveBytes, error);
  if (!database) return false;
  copy->database = *database;
  // Hashes, headers and padding in one: each byte of an archive follows from what it holds.
  *error = "is damaged: its hashes do not match, or it is cut off";
  return MakeArchive(*copy) == archive;
}

}  // namespace gateway
