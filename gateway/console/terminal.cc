#include "gateway/console/terminal.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "gateway/console/words.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

constexpr int kHistoryLines = 1000;
constexpr size_t kMostListed = 100;  // candidates for a word
constexpr char kCtrlC = '\x03';
constexpr std::chrono::seconds kSecondCancelTime{2};

const char* Prompt(EditLine*) { return "qorn> "; }

// The longest common beginning, in whole characters: libedit refuses a part of one.
std::string CommonBeginning(const std::vector<std::string>& words) {
  const std::string& first = words[0];
  size_t length = first.size();
  for (const std::string& word : words) {
    const auto differs = std::mismatch(first.begin(), first.end(), word.begin(), word.end());
    length = std::min(length, static_cast<size_t>(differs.first - first.begin()));
  }
  while (length < first.size() && IsContinuationByte(first[length])) --length;
  return first.substr(0, length);
}

}  // namespace

TerminalLineSource::TerminalLineSource(const StopSignals& signals, Printer* printer,
                                       TypingHelp help, HistoryFile file)
    : signals_(signals),
      printer_(printer),
      help_(std::move(help)),
      file_(std::move(file)),
      redraw_(eventfd(0, EFD_CLOEXEC)),
      history_(history_init()) {
  editor_.reset(el_init("qorn-gateway", stdin, stdout, stderr));
  HistEvent event;
  history(history_.get(), &event, H_SETSIZE, kHistoryLines);
  el_set(editor_.get(), EL_CLIENTDATA, this);
  el_set(editor_.get(), EL_PROMPT, Prompt);
  el_set(editor_.get(), EL_EDITOR, "emacs");
  el_set(editor_.get(), EL_HIST, history, history_.get());
  el_set(editor_.get(), EL_GETCFN, ReadCharacter);
  // The narrow form of this one leaks copies of both texts.
  el_wset(editor_.get(), EL_ADDFN, L"qorn-complete", L"complete the word", Complete);
  el_set(editor_.get(), EL_BIND, "^I", "qorn-complete", nullptr);
  for (const std::string& line : file_.Load())
    history(history_.get(), &event, H_ENTER, line.c_str());
}

LineSource::Result TerminalLineSource::Next(std::string* line) {
  for (;;) {
    if (signals_.WaitForStop(std::chrono::milliseconds(0))) return Result::kStopped;
    cancelled_ = Cancelled::kNot;
    int count = 0;
    const char* text = Edit(&count);
    if (signals_.WaitForStop(std::chrono::milliseconds(0))) return Result::kStopped;
    if (text == nullptr || count <= 0) return Result::kEnd;
    if (cancelled_ == Cancelled::kNot) {
      line->assign(text, static_cast<size_t>(count));
      if (line->back() == '\n') line->pop_back();
      Remember(*line);
      return Result::kLine;
    }
    if (cancelled_ == Cancelled::kEmpty && IsSecondCancel()) return Result::kEnd;
  }
}

const char* TerminalLineSource::Edit(int* count) {
  // The window may have another size by now.
  el_resize(editor_.get());
  // el_gets would draw the prompt first and take the terminal over after it: keys that are typed
  // in between would be lost.
  el_set(editor_.get(), EL_PREP_TERM, 1);
  // Ctrl-C is a key here and not SIGINT. Each time anew: taking the terminal over may copy its
  // keys.
  el_set(editor_.get(), EL_SETTY, "-d", "intr=", nullptr);
  printer_->PromptShown(redraw_.get());
  const char* const text = el_gets(editor_.get(), count);
  printer_->PromptHidden();
  return text;
}

void TerminalLineSource::CancelLine() {
  const LineInfo* const typed = el_line(editor_.get());
  cancelled_ = typed->lastchar == typed->buffer ? Cancelled::kEmpty : Cancelled::kTyped;
  // To the end of the line, "^C" put there as a character that is not a command, and Enter: libedit
  // then leaves cursor and screen as after any other line.
  pending_ = L"\x05\x16\x03\n";
}

bool TerminalLineSource::IsSecondCancel() {
  const auto now = std::chrono::steady_clock::now();
  if (warned_ && now - *warned_ < kSecondCancelTime) return true;
  warned_ = now;
  printer_->Say("\"quit\" or Ctrl-D ends the gateway, and so does a second Ctrl-C now.");
  return false;
}

void TerminalLineSource::Remember(const std::string& line) {
  if (line.empty()) return;
  HistEvent event;
  history(history_.get(), &event, H_ENTER, line.c_str());
  if (help_.may_be_kept(line)) file_.Append(line);
}

unsigned char TerminalLineSource::Complete(EditLine* editor, wint_t) {
  TerminalLineSource* self = nullptr;
  el_get(editor, EL_CLIENTDATA, &self);
  return self->CompleteLine();
}

// Adds what all candidates share; once there is nothing to add, lists them.
unsigned char TerminalLineSource::CompleteLine() {
  const LineInfo* typed = el_line(editor_.get());
  const std::string line(typed->buffer, typed->cursor);
  const std::vector<std::string> candidates = help_.complete(line);
  if (candidates.empty()) return CC_ERROR;
  const size_t begun = line.size() - LastWordStart(line);
  std::string rest = CommonBeginning(candidates).substr(begun);
  if (candidates.size() == 1) rest += ' ';
  if (!rest.empty()) {
    el_insertstr(editor_.get(), rest.c_str());
    return CC_REFRESH;
  }
  std::string lines = "\n";
  const size_t shown = std::min(candidates.size(), kMostListed);
  for (size_t i = 0; i < shown; ++i) lines += "  " + candidates[i] + "\n";
  const size_t left = candidates.size() - shown;
  if (left > 0) lines += "  and " + std::to_string(left) + " more\n";
  printer_->PromptHidden();
  printer_->ShowLines(lines);
  printer_->PromptShown(redraw_.get());
  return CC_REDISPLAY;
}

int TerminalLineSource::ReadCharacter(EditLine* editor, wchar_t* character) {
  TerminalLineSource* self = nullptr;
  el_get(editor, EL_CLIENTDATA, &self);
  for (;;) {
    if (!self->pending_.empty()) {
      *character = self->pending_.front();
      self->pending_.erase(0, 1);
      return 1;
    }
    if (!self->WaitForInput()) return 0;
    char byte = 0;
    const ssize_t count = read(STDIN_FILENO, &byte, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return static_cast<int>(count);
    if (byte == kCtrlC) {
      self->partial_ = std::mbstate_t{};
      self->CancelLine();
      continue;
    }
    const size_t length = std::mbrtowc(character, &byte, 1, &self->partial_);
    if (length == static_cast<size_t>(-2)) continue;
    if (length == static_cast<size_t>(-1)) {
      self->partial_ = std::mbstate_t{};
      continue;
    }
    return 1;
  }
}

bool TerminalLineSource::WaitForInput() {
  pollfd fds[] = {
      {STDIN_FILENO, POLLIN, 0}, {signals_.stop_fd(), POLLIN, 0}, {redraw_.get(), POLLIN, 0}};
  for (;;) {
    if (poll(fds, 3, -1) < 0) continue;
    if (fds[1].revents != 0) return false;
    if (fds[2].revents != 0) {
      eventfd_t ignored = 0;
      eventfd_read(redraw_.get(), &ignored);
      el_set(editor_.get(), EL_REFRESH);
    }
    if (fds[0].revents != 0) return true;
  }
}

}  // namespace gateway
