#ifndef QORN_DEVCLOUD_PAGE_PAGE_FILES_H_
#define QORN_DEVCLOUD_PAGE_PAGE_FILES_H_

namespace devcloud {

// The content of the files in devcloud/page/, compiled into the program.
extern const char* const kIndexHtml;
extern const char* const kPageCss;
extern const char* const kPageJs;
extern const char* const kIconSvg;

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_PAGE_PAGE_FILES_H_
