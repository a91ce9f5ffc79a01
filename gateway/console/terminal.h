// Lines from a person at a terminal, with editing and history.
#ifndef QORN_GATEWAY_CONSOLE_TERMINAL_H_
#define QORN_GATEWAY_CONSOLE_TERMINAL_H_

#include <histedit.h>

#include <chrono>
#include <cwchar>
#include <functional>
#include <memory>
#include <optional>
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
//
// Ctrl-C at the prompt is a key and no signal: it drops the typed line, and ends the input when it
// comes twice on an empty one. While a command runs it is SIGINT, which StopSignals takes.
class TerminalLineSource : public LineSource {
 public:
  // Borrows signals and printer.
  TerminalLineSource(const StopSignals& signals, Printer* printer, TypingHelp help,
                     HistoryFile file);

  Result Next(std::string* line) override;

 private:
  // What Ctrl-C did to the line.
  enum class Cancelled { kNot, kTyped, kEmpty };

  // Shows the prompt and reads a line; null when there is none.
  const char* Edit(int* count);

  // libedit calls it for the next character; below 1 ends the line.
  static int ReadCharacter(EditLine* editor, wchar_t* character);

  // Takes the keys that end a cancelled line in place of Ctrl-C.
  void CancelLine();

  // True for the second Ctrl-C on an empty line within two seconds; says after the first what ends
  // the gateway.
  bool IsSecondCancel();

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
  std::wstring pending_;  // characters that libedit gets before those of the terminal
  Cancelled cancelled_ = Cancelled::kNot;
  std::optional<std::chrono::steady_clock::time_point> warned_;
  std::unique_ptr<History, HistoryDeleter> history_;
  std::unique_ptr<EditLine, EditDeleter> editor_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_TERMINAL_H_
