// Lines from a person at a terminal, with editing and history.
#ifndef QORN_GATEWAY_TERMINAL_H_
#define QORN_GATEWAY_TERMINAL_H_

#include <histedit.h>

#include <cwchar>
#include <memory>
#include <string>

#include "gateway/descriptor.h"
#include "gateway/line_source.h"
#include "gateway/printer.h"
#include "gateway/signals.h"

namespace gateway {

// Uses standard input and output. History lasts as long as the object: passwords and codes are
// typed here, so nothing is written to a file.
class TerminalLineSource : public LineSource {
 public:
  // Borrows both.
  TerminalLineSource(const StopSignals& signals, Printer* printer);

  Result Next(std::string* line) override;

 private:
  // libedit calls it for the next character; below 1 ends the line.
  static int ReadCharacter(EditLine* editor, wchar_t* character);

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
  const Descriptor redraw_;
  std::mbstate_t partial_{};
  std::unique_ptr<History, HistoryDeleter> history_;
  std::unique_ptr<EditLine, EditDeleter> editor_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_TERMINAL_H_
