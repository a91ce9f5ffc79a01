#ifndef QORN_CORE_FW_ACCOUNT_SRC_XML_DEPTH_H_
#define QORN_CORE_FW_ACCOUNT_SRC_XML_DEPTH_H_

#include <string_view>

namespace account {

// Whether TinyXML would nest elements deeper than `limit` when it parses `xml`, a text without zero
// bytes that begins with a declaration. Exact for any such text, well-formed or not: the library
// recurses once for each level and has no limit of its own. Any thread.
bool XmlNestsDeeperThan(std::string_view xml, int limit);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_XML_DEPTH_H_
