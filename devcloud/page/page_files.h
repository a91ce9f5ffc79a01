#ifndef QORN_DEVCLOUD_PAGE_PAGE_FILES_H_
#define QORN_DEVCLOUD_PAGE_PAGE_FILES_H_

#include <span>
#include <string_view>

namespace devcloud {

struct PageFile {
  std::string_view name;
  std::string_view text;
};

// The files in devcloud/page/ that browsers load, compiled into the program.
std::span<const PageFile> PageFiles();

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_PAGE_PAGE_FILES_H_
