#include "gateway/output/printer.h"

#include <sys/eventfd.h>

#include <utility>
#include <vector>

#include "gateway/output/json_lines.h"
#include "gateway/output/tables.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

constexpr char kWipeLine[] = "\r\x1b[K";

std::string PlainJson(const std::string& type, std::vector<Field> fields) {
  return JsonLine({.type = type, .attributes = std::move(fields)}, true);
}

}  // namespace

Printer::Printer(std::ostream& out, std::ostream& err, PrinterStyle style)
    : out_(out), err_(err), style_(std::move(style)) {}

void Printer::Say(const std::string& text) {
  Write(out_, style_.json ? PlainJson("text", {{"text", {text}}}) : Visible(text) + "\n");
}

void Printer::Error(const std::string& text, const std::string& source, int line) {
  if (style_.json) {
    std::vector<Field> fields;
    if (!source.empty()) {
      fields = {{.name = "source", .values = {source}}, NumberField("line", line)};
    }
    fields.push_back({"text", {text}});
    Write(err_, PlainJson("error", std::move(fields)));
    return;
  }
  const std::string place = source.empty() ? "" : source + ":" + std::to_string(line) + ": ";
  Write(err_,
        Paint(style_.program + ": " + Visible(place + text), Tone::kError, style_.color_errors) +
            "\n");
}

void Printer::LogLine(const std::string& severity, const std::string& text) {
  if (style_.json) {
    Write(out_, PlainJson("log", {{"severity", {severity}}, {"text", {text}}}));
  } else {
    Write(out_, Paint(Visible(text), Tone::kQuiet, style_.color_out) + "\n");
  }
}

void Printer::Show(const Record& record) {
  Write(out_, style_.json ? JsonLine(record, style_.show_secrets)
                          : LayOut(record, style_.show_secrets, style_.color_out));
}

void Printer::Show(const Table& table) {
  Write(out_, style_.json ? JsonLines(table, style_.show_secrets)
                          : LayOut(table, style_.show_secrets, style_.color_out));
}

void Printer::ShowLines(const std::string& lines) { Write(out_, lines); }

void Printer::PromptShown(int wake_fd) {
  base::AutoLock hold(lock_);
  wake_fd_ = wake_fd;
}

void Printer::PromptHidden() {
  base::AutoLock hold(lock_);
  wake_fd_ = -1;
}

bool Printer::has_failed() {
  base::AutoLock hold(lock_);
  return failed_;
}

void Printer::Write(std::ostream& stream, const std::string& lines) {
  base::AutoLock hold(lock_);
  // All under the lock: the prompt must not be drawn between the erasing and the text.
  if (wake_fd_ >= 0) stream << kWipeLine;
  stream << lines << std::flush;
  if (!stream) failed_ = true;
  // Clear the error, so that the next line is tried: a disk may have room again.
  stream.clear();
  if (wake_fd_ >= 0) eventfd_write(wake_fd_, 1);
}

}  // namespace gateway
