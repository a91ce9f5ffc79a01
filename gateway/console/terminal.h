// Lines from a person at a terminal, with editing and history.
#ifndef QORN_GATEWAY_CONSOLE_TERMINAL_H_
#define QORN_GATEWAY_CONSOLE_TERMINAL_H_

#include <histedit.h>

#include <cwchar>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/scoped_fd.h"
#include "gateway/console/history_file.h"
#include "gateway/console/line_source.h"
#include "gateway/output/printer.h"
#include "gateway/process/signals.h"

namespace gateway {

// What is known of a line while it is typed.
struct TypingHelp {
  // The words that may stand where the last word of the line begins.
  std::function<std::vector<std::string>(const std::string& line)> complete;
  // Whether the line may be kept in a file: passwords and codes are typed here too.
  std::function<bool(const std::string& line)> may_be_kept;
};

// Uses standard input and output.
class TerminalLineSource : public LineSource {
 public:
  // Borrows signals and printer.
  TerminalLineSource(const StopSignals& signals, Printer* printer, TypingHelp help,
                     HistoryFile file);

  Result Next(std::string* line) override;

 private:
  // libedit calls it for the next character; below 1 ends the line.
  static int ReadCharacter(EditLine* editor, wchar_t* character);

  // libedit calls it for the Tab key.
  static unsigned char Complete(EditLine* editor, wint_t key);
  unsigned char CompleteLine();

  void Remember(const std::string& line);

  // Waits for a byte of input; false when the program was told to stop. Draws the prompt again
  // whenever the printer wrote a line over it.
  bool WaitForInput();

  struct EditDeleter {
    void operator()(EditLine* editor) const { el_end(editor); }
  };
  struct HistoryDeleter {
    void operator()(History* history) const { history_end(history); }
  };

  const StopSignals& signals_;
  Printer* const printer_;
  const TypingHelp help_;
  HistoryFile file_;
  const base::ScopedFd redraw_;
  std::mbstate_t partial_{};
  std::unique_ptr<History, HistoryDeleter> history_;
  std::unique_ptr<EditLine, EditDeleter> editor_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_TERMINAL_H_
