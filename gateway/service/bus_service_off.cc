// The service of a build without D-Bus.
#include "gateway/service/bus_service.h"

namespace gateway {

class BusService::Impl {};

BusService::BusService(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
BusService::~BusService() = default;

bool BusService::IsBuilt() { return false; }

std::unique_ptr<BusService> BusService::Start(const Options& /*options*/, const Parts& /*parts*/,
                                              std::string* error) {
  *error = "--bus: this program was built without D-Bus";
  return nullptr;
}

void BusService::Stop() {}

void BusService::NoteEvent(const SeenEvent& /*event*/) {}
void BusService::NoteSignInNeeded(const std::string& /*user_uuid*/, const std::string& /*user_id*/,
                                  bool /*needed*/) {}

}  // namespace gateway
