// Everything that people and scripts read: records and tables, as text or as JSON lines, and the
// small pure functions on text that this needs. The printer is the only one that writes to standard
// output and error.
#ifndef QORN_GATEWAY_OUTPUT_PRINTER_H_
#define QORN_GATEWAY_OUTPUT_PRINTER_H_

#include <functional>
#include <ostream>
#include <string>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "gateway/output/records.h"

namespace gateway {

struct PrinterStyle {
  std::string program = "qorn-gateway";  // before each error
  bool json = false;
  bool show_secrets = false;
  bool color_out = false;
  bool color_errors = false;
  // How wide the terminal is at this moment, since people resize windows; none for other outputs.
  std::function<size_t()> columns = {};
};

// Thread-safe. The output of one call stays together and is flushed.
class Printer {
 public:
  // Borrows both streams.
  Printer(std::ostream& out, std::ostream& err, PrinterStyle style);
  Printer(const Printer&) = delete;
  Printer& operator=(const Printer&) = delete;

  void Say(const std::string& text);
  // To the error stream, after the program's name. `source` and `line` say where the command
  // stands; "" and 0 for none.
  void Error(const std::string& text, const std::string& source = "", int line = 0);
  void LogLine(const std::string& severity, const std::string& text);
  void Show(const Record& record);
  void Show(const Table& table);
  // Lines that the caller laid out itself, control characters included.
  void ShowLines(const std::string& lines);

  // While a prompt is shown, output first erases it and then writes to `wake_fd` (an eventfd,
  // borrowed), which tells the prompt's owner to draw it again.
  void PromptShown(int wake_fd);
  void PromptHidden();

  // Whether a write to either stream has failed: a full disk, a closed pipe.
  bool has_failed();

  const PrinterStyle& style() const { return style_; }
  // The terminal's width; 0 when lines have no limit.
  size_t columns() const { return style_.columns ? style_.columns() : 0; }

 private:
  void Write(std::ostream& stream, const std::string& lines);

  std::ostream& out_;
  std::ostream& err_;
  const PrinterStyle style_;
  base::Lock lock_;
  int wake_fd_ GUARDED_BY(lock_) = -1;
  bool failed_ GUARDED_BY(lock_) = false;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_PRINTER_H_
