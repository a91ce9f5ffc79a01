#ifndef QORN_CORE_FW_ACCOUNT_SRC_XML_DEPTH_H_
#define QORN_CORE_FW_ACCOUNT_SRC_XML_DEPTH_H_

#include <string_view>

namespace account {

// Whether parsing `xml` could nest elements deeper than `limit`. Never false for a text that does;
// true also for one with over `limit` elements whose markup cannot be followed with certainty: a
// declaration that is not plain, a character reference without its end, bytes that are no UTF-8.
// The XML library recurses once a level and has no limit of its own. Any thread.
bool XmlNestsDeeperThan(std::string_view xml, int limit);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_XML_DEPTH_H_
