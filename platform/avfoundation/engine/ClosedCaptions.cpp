#include "platform/avfoundation/engine/ClosedCaptions.h"

#include <glib.h>
#include <libzvbi.h>

#include <array>
#include <utility>

#include "platform/avfoundation/engine/CaptionText.h"

namespace {

// A text that nothing takes away goes by itself.
constexpr std::int64_t shownLimit = 16'000'000'000;
constexpr std::int64_t pairInterval = 1'001'000'000 / 30;
constexpr std::size_t waitingLimit = 256;
constexpr std::uint8_t letterBits = 0x7F;

// The screen's rows that have letters, one a line.
std::string textOf(const vbi_page& page) {
  std::string text;
  for (int row = 0; row < page.rows; ++row) {
    std::string line;
    for (int column = 0; column < page.columns; ++column) {
      const vbi_char& letter = page.text[row * page.columns + column];
      const bool isShown = letter.opacity != VBI_TRANSPARENT_SPACE && letter.unicode > ' ';
      char bytes[6];
      isShown ? line.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(letter.unicode, bytes))) : line += ' ';
    }
    line = tidyCaption(line);
    if (!line.empty()) text += (text.empty() ? "" : "\n") + line;
  }
  return text;
}

}  // namespace

struct ClosedCaptions::Decoder {
  Decoder() : vbi(vbi_decoder_new(), &vbi_decoder_delete) {
    if (vbi) vbi_event_handler_register(vbi.get(), VBI_EVENT_CAPTION, &Decoder::changed, this);
  }
  // Whether the text is another one now.
  bool read(const Pair& pair) {
    if (!vbi) return false;
    vbi_sliced line{};
    line.id = pair.field == 0 ? VBI_SLICED_CAPTION_525_F1 : VBI_SLICED_CAPTION_525_F2;
    line.line = pair.field == 0 ? 21 : 284;
    line.data[0] = vbi_par8(pair.first & letterBits);  // some media have lost the bit that checks the others
    line.data[1] = vbi_par8(pair.second & letterBits);
    const std::string before = text;
    vbi_decode(vbi.get(), &line, 1, time += 1 / 30.0);
    return text != before;
  }
  static void changed(vbi_event* event, void* data) {
    auto& self = *static_cast<Decoder*>(data);
    const int number = event->ev.caption.pgno;
    vbi_page page;
    constexpr int lastCaption = 4;  // what follows are pages to be read
    if (number > (self.number ? self.number : lastCaption)) return;
    if (!vbi_fetch_cc_page(self.vbi.get(), &page, number, TRUE)) return;
    std::string text = textOf(page);
    if (!text.empty()) self.number = number;
    if (number == self.number) self.text = std::move(text);
  }

  const std::unique_ptr<vbi_decoder, decltype(&vbi_decoder_delete)> vbi;
  double time = 0;  // its own, in which no picture is missing
  int number = 0;   // of the captions that are taken, from 1; 0 as long as none has shown a text
  std::string text;
};

ClosedCaptions::ClosedCaptions(std::function<void(CaptionCue)> found) : found_(std::move(found)) {}
ClosedCaptions::~ClosedCaptions() = default;

void ClosedCaptions::take(std::int64_t time, std::span<const Pair> pairs, std::int64_t settled) {
  std::array<std::int64_t, 2> due{time, time};
  for (const Pair& pair : pairs) {
    const bool isSaying = (pair.first & letterBits) != 0 || (pair.second & letterBits) != 0;
    if (isSaying || decoder_ || !waiting_.empty()) waiting_.emplace(due[pair.field], pair);
    due[pair.field] += pairInterval;
  }
  read(settled);
}

void ClosedCaptions::restart() {
  waiting_.clear();
  decoder_.reset();
}

void ClosedCaptions::read(std::int64_t until) {
  while (!waiting_.empty() && (waiting_.begin()->first <= until || waiting_.size() > waitingLimit)) {
    const auto [time, pair] = *waiting_.begin();
    waiting_.erase(waiting_.begin());
    read(time, pair);
  }
}

void ClosedCaptions::read(std::int64_t time, const Pair& pair) {
  if (!decoder_) decoder_ = std::make_unique<Decoder>();
  if (!decoder_->read(pair)) return;
  CaptionCue cue;
  cue.start = time;
  cue.end = time + shownLimit;
  cue.endsWithNext = true;
  cue.caption.text = decoder_->text;
  found_(std::move(cue));
}
