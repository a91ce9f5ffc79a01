#include "gateway/output/tables.h"

#include <algorithm>
#include <cwchar>
#include <utility>

#include "gateway/output/text.h"

namespace gateway {
namespace {

constexpr char kColumnGap[] = "  ";

const char* ToneColor(Tone tone) {
  switch (tone) {
    case Tone::kEvent:
      return "\x1b[36m";
    case Tone::kError:
      return "\x1b[31m";
    case Tone::kTitle:
      return "\x1b[1m";
    case Tone::kQuiet:
      return "\x1b[2m";
    case Tone::kPlain:
      break;
  }
  return "";
}

std::string Shown(const Field& field, const std::string& value, bool show_secrets) {
  return Visible(field.secret && !show_secrets ? ShortenSecret(value) : value);
}

std::string Cell(const std::vector<Field>& row, const std::string& name, bool show_secrets) {
  for (const Field& field : row) {
    if (field.name == name && !field.values.empty()) {
      return Shown(field, field.values[0], show_secrets);
    }
  }
  return "";
}

// Trailing blanks would wrap in a window that is as wide as the table.
std::string Line(const std::vector<std::string>& cells, const std::vector<size_t>& widths) {
  std::string line;
  for (size_t i = 0; i < cells.size(); ++i) line += PadTo(cells[i], widths[i]) + kColumnGap;
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

}  // namespace

std::string Paint(const std::string& text, Tone tone, bool color) {
  if (!color || tone == Tone::kPlain || text.empty()) return text;
  return ToneColor(tone) + text + "\x1b[0m";
}

std::string LayOut(const Record& record, bool show_secrets, bool color) {
  const Tone tone = record.type == "event" ? Tone::kEvent : Tone::kPlain;
  std::string lines = Paint(Visible(record.head), tone, color) + "\n";
  for (const Field& field : record.fields) {
    for (const std::string& value : field.values) {
      lines += "  " + field.name + ": " + Shown(field, value, show_secrets) + "\n";
    }
  }
  return lines;
}

std::string LayOut(const Table& table, bool show_secrets, bool color) {
  if (table.rows.empty()) return table.empty + "\n";
  std::vector<std::vector<std::string>> lines(1);
  for (const Table::Column& column : table.columns) lines[0].push_back(column.title);
  for (const std::vector<Field>& row : table.rows) {
    std::vector<std::string> cells;
    for (const Table::Column& column : table.columns) {
      cells.push_back(Cell(row, column.field, show_secrets));
    }
    lines.push_back(std::move(cells));
  }
  std::vector<size_t> widths(table.columns.size());
  for (const std::vector<std::string>& cells : lines) {
    for (size_t i = 0; i < cells.size(); ++i)
      widths[i] = std::max(widths[i], DisplayWidth(cells[i]));
  }
  std::string text = Paint(Line(lines[0], widths), Tone::kTitle, color) + "\n";
  for (size_t i = 1; i < lines.size(); ++i) text += Line(lines[i], widths) + "\n";
  return text;
}

size_t DisplayWidth(const std::string& text) {
  size_t width = 0;
  std::mbstate_t state{};
  for (size_t at = 0; at < text.size();) {
    wchar_t character = 0;
    const size_t length = std::mbrtowc(&character, text.data() + at, text.size() - at, &state);
    // Neither a zero byte nor an incomplete or invalid character: each byte counts as one column.
    if (length == 0 || length > text.size()) {
      state = std::mbstate_t{};
      ++width;
      ++at;
      continue;
    }
    const int columns = wcwidth(character);
    if (columns > 0) width += static_cast<size_t>(columns);
    at += length;
  }
  return width;
}

std::string Wrap(const std::string& text, size_t taken, size_t indent, size_t columns) {
  if (columns == 0) return text;
  std::string lines;
  bool begins = true;
  for (const std::string& word : SplitAtBlanks(text)) {
    const size_t width = DisplayWidth(word);
    if (!begins && taken + 1 + width > columns) {
      lines += "\n" + std::string(indent, ' ');
      taken = indent;
      begins = true;
    }
    lines += (begins ? "" : " ") + word;
    taken += (begins ? 0 : 1) + width;
    begins = false;
  }
  return lines;
}

std::string PadTo(const std::string& text, size_t width) {
  const size_t taken = DisplayWidth(text);
  return taken < width ? text + std::string(width - taken, ' ') : text;
}

}  // namespace gateway
