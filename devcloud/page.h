#ifndef QORN_DEVCLOUD_PAGE_H_
#define QORN_DEVCLOUD_PAGE_H_

#include <vector>

#include "devcloud/accounts.h"
#include "devcloud/devices.h"
#include "devcloud/http_text.h"
#include "devcloud/recorded_request.h"

namespace devcloud {

// A page with users, devices and the latest 20 requests. Codes and tokens are not on it.
Answer MakePage(const AccountRecords& accounts, const std::vector<Device>& devices,
                const std::vector<RecordedRequest>& requests);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_PAGE_H_
