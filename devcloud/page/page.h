// page/ is the web page: its HTML, CSS and script, which the build puts into the program, and the
// routes that serve them.
#ifndef QORN_DEVCLOUD_PAGE_PAGE_H_
#define QORN_DEVCLOUD_PAGE_PAGE_H_

#include <string>
#include <vector>

#include "devcloud/http/router.h"

namespace devcloud {

// The page at / and its parts at /page/NAME.
void AddPageRoutes(Router* router);

// A small page in the same style. Both texts are markup.
std::string SmallPage(const std::string& title, const std::string& content);

// "Name: value" lines with which every page goes out: it loads nothing from elsewhere, runs no
// script but its own, and cannot be framed.
std::vector<std::string> PageHeaderLines();

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_PAGE_PAGE_H_
