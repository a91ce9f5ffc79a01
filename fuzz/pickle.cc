// Pickles from elsewhere, and the events that the console reads from them.
#include "base/pickle.h"

#include "fuzz/fuzz.h"
#include "gateway/operations/event_listener.h"

namespace {

// Reads strings and integers as `kinds` says. What can be read is written to `copy`.
void Read(const std::string& bytes, unsigned kinds, Pickle* copy) {
  const Pickle pickle(bytes.data(), bytes.size());
  PickleIterator fields(pickle);
  bool over = false;
  for (int i = 0; i < 16; ++i, kinds = kinds << 31 | kinds >> 1) {
    std::string text = "held";
    int number = 7;
    const bool is_text = (kinds & 1) != 0;
    const bool read = is_text ? fields.ReadString(&text) : fields.ReadInt(&number);
    fuzz::Require(!(over && read), "nothing is read after a failure");
    fuzz::Require(read || (text == "held" && number == 7), "a failure leaves the output");
    fuzz::Require(!read || !is_text || text.size() <= bytes.size(), "a text comes from the bytes");
    if (read) fuzz::Require(is_text ? copy->WriteString(text) : copy->WriteInt(number), "it fits");
    over = !read;
  }
}

}  // namespace

void fuzz::Run(const std::string& input) {
  if (input.empty()) return;
  const std::string bytes = input.substr(1);
  const auto first = static_cast<unsigned char>(input[0]);
  const unsigned kinds = first * 0x01010101U;
  Pickle copy, again;
  Read(bytes, kinds, &copy);
  Read(std::string(copy.data(), copy.size()), kinds, &again);
  fuzz::Require(std::string(copy.data(), copy.size()) == std::string(again.data(), again.size()),
                "what was written reads the same");
  const Pickle pickle(bytes.data(), bytes.size());
  const gateway::SeenEvent event = gateway::DecodeEvent(first % 10, pickle);
  fuzz::Require(event.fields.size() <= 4, "an event has its fields at most");
  gateway::EventRecord(event);
}
