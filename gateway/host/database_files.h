#ifndef QORN_GATEWAY_HOST_DATABASE_FILES_H_
#define QORN_GATEWAY_HOST_DATABASE_FILES_H_

#include <string>

#include "gateway/host/finding.h"

namespace gateway {

// Examines the folder of the database file `path`, the file itself and what a write left beside
// it. True when there is a file to be opened.
bool ExamineFiles(const std::string& path, Findings* findings);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_DATABASE_FILES_H_
