#include "gateway/keeper/transfer_error.h"

#include <cstdlib>
#include <string_view>
#include <utility>

namespace gateway {
namespace {

thread_local int t_code = 0;

}  // namespace

void NoteTransferError(const std::string& log_line) {
  static constexpr std::string_view kBegin = "curl error code = ";
  const size_t found = log_line.find(kBegin);
  if (found != std::string::npos) t_code = std::atoi(log_line.c_str() + found + kBegin.size());
}

int TakeTransferError() { return std::exchange(t_code, 0); }

}  // namespace gateway
