// page/ is the web page: its HTML, CSS and script, which the build puts into the program, and the
// routes that serve them.
#ifndef QORN_DEVCLOUD_PAGE_PAGE_H_
#define QORN_DEVCLOUD_PAGE_PAGE_H_

#include <string>
#include <vector>

#include "devcloud/http/router.h"

namespace devcloud {

// Adds the routes of the page at / and of its files at /page/NAME.
void AddPageRoutes(Router* router);

// A small page in the same style. Both texts are HTML.
std::string SmallPage(const std::string& title, const std::string& content);

// The "Name: value" lines of every page: it loads nothing from other sites, runs only its own
// script and cannot be put into a frame.
std::vector<std::string> PageHeaderLines();

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_PAGE_PAGE_H_
