#include "gateway/printer.h"

#include <sys/eventfd.h>

#include "gateway/text.h"

namespace gateway {
namespace {

constexpr char kWipeLine[] = "\r\x1b[K";

}  // namespace

Printer::Printer(std::ostream& out, std::ostream& err, bool show_secrets)
    : out_(out), err_(err), show_secrets_(show_secrets) {}

void Printer::Say(const std::string& text) { Write(out_, Visible(text) + "\n"); }

void Printer::Error(const std::string& text) {
  Write(err_, "qorn-gateway: " + Visible(text) + "\n");
}

void Printer::Block(const std::string& head, const std::vector<Field>& fields) {
  std::string lines = Visible(head) + "\n";
  for (const Field& field : fields) {
    const bool shorten = field.secret && !show_secrets_;
    for (const std::string& value : field.values) {
      lines += "  " + field.name + ": " + Visible(shorten ? ShortenSecret(value) : value) + "\n";
    }
  }
  Write(out_, lines);
}

void Printer::PromptShown(int wake_fd) {
  base::AutoLock hold(lock_);
  wake_fd_ = wake_fd;
}

void Printer::PromptHidden() {
  base::AutoLock hold(lock_);
  wake_fd_ = -1;
}

void Printer::Write(std::ostream& stream, const std::string& lines) {
  base::AutoLock hold(lock_);
  if (wake_fd_ >= 0) stream << kWipeLine;
  stream << lines << std::flush;
  if (wake_fd_ >= 0) eventfd_write(wake_fd_, 1);
}

}  // namespace gateway
