#include "gateway/output/style.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace gateway {
namespace {

size_t TerminalColumns() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

}  // namespace

PrinterStyle MakeStyle(bool json, bool show_secrets) {
  const char* no_color = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  const bool wanted = !json && (no_color == nullptr || *no_color == '\0') && terminal != nullptr &&
                      std::strcmp(terminal, "dumb") != 0;
  PrinterStyle style;
  style.json = json;
  style.show_secrets = show_secrets;
  style.color_out = wanted && isatty(STDOUT_FILENO) == 1;
  style.color_errors = wanted && isatty(STDERR_FILENO) == 1;
  if (isatty(STDOUT_FILENO) == 1) style.columns = TerminalColumns;
  return style;
}

}  // namespace gateway
