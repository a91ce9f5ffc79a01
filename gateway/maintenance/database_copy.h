#ifndef QORN_GATEWAY_MAINTENANCE_DATABASE_COPY_H_
#define QORN_GATEWAY_MAINTENANCE_DATABASE_COPY_H_

#include <string>

#include "gateway/maintenance/archive.h"

namespace gateway {

// Copies the database at `path` as it is at one moment, also beside a gateway that writes to it,
// and counts what it holds. Without `with_tokens` no page of the copy holds a token. Nothing but
// `copy` is written; the manifest's time and address are left alone. False, with one line in
// `error`, for a database that CheckDatabase would refuse.
bool CopyDatabase(const std::string& path, bool with_tokens, Copy* copy, std::string* error);

// Whether the copy's database is sound, has the gateway's tables with their columns and nothing
// else, and holds what the manifest says. False with a reason in `error`.
bool CheckDatabase(const Copy& copy, std::string* error);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_DATABASE_COPY_H_
