// A programme on a played server, in time that is moved: what of it reaches a reader, and how often it is asked for.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <openssl/evp.h>

#include <map>

#include "platform/avfoundation/bytes/ByteStoreLayout.h"
#include "platform/avfoundation/hls/HLSLoader.h"

using namespace std::chrono_literals;

namespace {

using testing::HasSubstr;
using Kind = SegmentRecord::Kind;

// What a path gives: a text, a status, or silence; cut after so many bytes.
struct Page {
  std::string text;
  int status = 200;
  bool isSilent = false;
  std::size_t cutAfter = SIZE_MAX;
};

class Site final : public HTTPStreams {
 public:
  std::map<std::string, std::function<Page()>> pages;
  std::vector<std::string> log;

  std::unique_ptr<HTTPStream> start(HTTPStreamRequest request, HTTPStreamClient& client) override {
    const auto path = request.url.path();
    log.push_back(path);
    Page page = pages.contains(path) ? pages[path]() : Page{.text = {}, .status = 404};
    std::size_t first = 0;
    for (const auto& header : request.headers) {
      if (header.starts_with("Range: bytes=")) first = std::stoul(header.substr(13));
    }
    return std::make_unique<Stream>(*this, client, std::move(page), first, request.url.absoluteString());
  }
  bool pump() {
    bool has = false;
    const auto all = streams_;
    for (Stream* each : all) has = (std::ranges::count(streams_, each) && each->pump()) || has;
    return has;
  }
  std::size_t count(const std::string& path) const { return static_cast<std::size_t>(std::ranges::count(log, path)); }

 private:
  struct Stream final : HTTPStream {
    Stream(Site& of, HTTPStreamClient& to, Page what, std::size_t from, std::string where)
        : site(of), client(to), page(std::move(what)), place(from), url(std::move(where)) {
      site.streams_.push_back(this);
    }
    ~Stream() override { std::erase(site.streams_, this); }
    void resume() override { isPaused = false; }
    bool pump() {
      if (isOver || isPaused || page.isSilent) return false;
      HTTPAnswer answer;
      answer.status = page.status == 200 && place > 0 ? 206 : page.status;
      answer.url = url;
      answer.headers["content-range"] = "bytes " + std::to_string(place) + "-";
      answer.length = page.text.size() - std::min(place, page.text.size());
      const bool isCut = *answer.length > page.cutAfter;
      const auto body = page.text.substr(std::min(place, page.text.size())).substr(0, page.cutAfter);
      const bool goesOn = client.streamDidAnswer(answer);
      if (goesOn && !body.empty()) {
        isPaused = client.streamDidReceive(std::as_bytes(std::span(body))) == HTTPStreamClient::Taken::none;
        if (isPaused) return false;
      }
      isOver = true;
      client.streamDidEnd(isCut ? std::optional(NSError{NSURLErrorDomain, -1005, ""}) : std::nullopt);
      return true;
    }
    Site& site;
    HTTPStreamClient& client;
    Page page;
    std::size_t place;
    std::string url;
    bool isOver = false, isPaused = false;
  };
  std::vector<Stream*> streams_;
};

// One packet of a transport stream, by its mark.
std::string segment(const std::string& name) {
  std::string packet = "G " + name;
  packet.resize(188, '.');
  return packet;
}

class Loader : public testing::Test {
 protected:
  Loader() : store(ByteStore::make(16 << 20)), reader(store->makeReader()) {
    reader->setInterrupted(true);
    const int copy = ::fcntl(store->descriptors().control, F_DUPFD_CLOEXEC, 0);
    controlMemory = SharedMemory::adopt(Descriptor(copy), sizeof(ByteStoreLayout::Control), true);
    for (const char* variant : {"low", "high"}) {
      put(std::string("/") + variant + ".m3u8", film(variant, 6));
      for (int i = 0; i < 20; ++i) {
        const auto name = variant + std::to_string(i);
        put("/" + name, segment(name));
      }
    }
  }
  void put(const std::string& path, std::string text) {
    site.pages[path] = [text = std::move(text)] { return Page{text}; };
  }
  static std::string film(const std::string& name, int count, const std::string& more = "#EXT-X-ENDLIST\n") {
    std::string text = "#EXTM3U\n#EXT-X-TARGETDURATION:6\n";
    for (int i = 0; i < count; ++i) text += "#EXTINF:6,\n" + name + std::to_string(i) + "\n";
    return text + more;
  }
  const std::string master =
      "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=400000\nlow.m3u8\n#EXT-X-STREAM-INF:BANDWIDTH=900000\nhigh.m3u8\n";

  // Moves time and reads what there is, for so long. As the thread that drives it does: a turn when something has come
  // or the reader waits, and none before the next one is due.
  void run(HLSLoader::Time time, const std::string& text, const std::string& name = "master.m3u8") {
    if (!loader) {
      loader = std::make_unique<HLSLoader>(
          HLSLoader::Source{.url = *NSURL::URLWithString("http://media.example/" + name), .text = text}, store, site);
    }
    for (const auto end = now + time; now < end;) {
      loader->turn(now);
      if (site.pump() || read()) continue;
      const auto due = loader->turn(now);
      if (site.pump()) continue;
      now = std::min(end, std::max(now + 1ms, due.value_or(end)));
    }
  }
  bool read() {
    auto& control = *reinterpret_cast<ByteStoreLayout::Control*>(controlMemory.data());
    std::array<std::byte, sizeof(SegmentRecord)> head;
    std::size_t count = 0;
    const auto outcome = reader->read(place, head, count);
    control.isWaiting = outcome == MediaBytes::Outcome::interrupted;
    control.place = place;
    if (outcome != MediaBytes::Outcome::done) return false;
    const auto record = segmentRecord(head);
    EXPECT_TRUE(record);
    std::string content(record->size, ' ');
    if (record->size > 0) reader->read(place + sizeof head, std::as_writable_bytes(std::span(content)), count);
    place += sizeof head + record->size;
    const auto what = content.substr(0, content.find('.'));
    if (record->kind == Kind::data && what.starts_with("G ")) told += what.substr(2) + " ";
    if (record->kind == Kind::hole) told += "hole ";
    if (record->kind == Kind::trackEnd) told += "end" + std::to_string(record->track) + " ";
    if (record->kind == Kind::over) told += "over";
    if (record->kind == Kind::facts) facts = *record;
    return true;
  }
  void wish(SegmentWish wish) {
    reader->setWish(wish.packed());
    place = wish.mediaPlace();
    told.clear();
  }

  Site site;
  std::shared_ptr<ByteStore> store;
  std::shared_ptr<MediaBytes> reader;
  SharedMemory controlMemory;
  std::unique_ptr<HLSLoader> loader;
  HLSLoader::Time now = 100s;
  std::uint64_t place = 0;
  std::string told;
  SegmentRecord facts;
};

TEST_F(Loader, bringsAFilmInARowAndFromWhereverItIsWanted) {
  site.pages["/high3"] = [] { return Page{.text = segment("high3"), .cutAfter = 100}; };
  run(10s, master);
  EXPECT_EQ(told, "high0 high1 high2 high3 high4 high5 over") << "a lost connection costs nothing";
  EXPECT_EQ(facts.duration, 36'000'000'000);
  wish({.number = 1, .text = {}, .time = 13'000'000'000});
  run(10s, master);
  EXPECT_EQ(told, "high2 high3 high4 high5 over");
  wish({.number = 2, .text = {}, .time = 25'000'000'000});
  reader->setWish(SegmentWish{.number = 3, .text = 0, .time = 25'000'000'000}.packed());
  run(10s, master);
  EXPECT_EQ(told, "high4 high5 over") << "texts are wanted before the row was";
  EXPECT_FALSE(store->failure());
}

TEST_F(Loader, takesFromAnotherVariantWhatOneDoesNotHave) {
  put("/high2", "<html>not here</html>");
  site.pages.erase("/high4");
  run(20s, master);
  EXPECT_EQ(told, "high0 high1 low2 high3 low4 high5 over");
  EXPECT_EQ(site.count("/high4"), 2u);
}

TEST_F(Loader, leavesADeadVariantAlone) {
  site.pages["/high.m3u8"] = [] { return Page{.text = {}, .isSilent = true}; };
  run(60s, master);
  EXPECT_EQ(told, "low0 low1 low2 low3 low4 low5 over");
  EXPECT_LE(site.count("/high.m3u8"), 3u);
}

TEST_F(Loader, leavesOutWhatNobodyHasButNotTheEndOfAFilm) {
  site.pages.erase("/low0");
  run(10s, film("low", 6, "#EXT-X-GAP\n#EXTINF:6,\nhigh0\n#EXTINF:6,\nhigh1\n#EXT-X-ENDLIST"), "low.m3u8");
  EXPECT_EQ(told, "hole low1 low2 low3 low4 low5 hole high1 over");
  EXPECT_EQ(site.count("/high0"), 0u);
  loader.reset();
  store = ByteStore::make(16 << 20);
  site.pages.erase("/low5");
  run(10s, film("low", 6), "low.m3u8");
  ASSERT_TRUE(store->failure());
  EXPECT_EQ(store->failure()->code, AVErrorContentIsUnavailable);
}

TEST_F(Loader, losesSoundOrTextsOfTheirOwnAndNothingElse) {
  const std::string more =
      "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"one\",DEFAULT=YES,URI=\"one.m3u8\"\n"
      "#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID=\"t\",NAME=\"x\",URI=\"texts.m3u8\"\n"
      "#EXT-X-STREAM-INF:BANDWIDTH=400000,AUDIO=\"a\",SUBTITLES=\"t\"\nlow.m3u8\n";
  put("/one.m3u8", film("sound", 6));
  for (int i = 0; i < 6; ++i) {
    if (i < 3) put("/sound" + std::to_string(i), segment("sound" + std::to_string(i)));
  }
  put("/texts.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:2" + std::string(50'000'000, 'x'));
  wish({.number = 1, .text = 0, .time = 0});
  run(30s, "#EXTM3U\n" + more);
  EXPECT_EQ(told, "sound0 low0 sound1 low1 sound2 low2 low3 end1 low4 low5 over");
  EXPECT_EQ(site.count("/texts.m3u8"), 1u);
}

TEST_F(Loader, decryptsWithTheSegmentsNumberAndSaysWhenTheKeyIsMissing) {
  const std::string plain = segment("low0"), key = "0123456789abcdef";
  std::array<unsigned char, 16> iv{};
  iv[15] = 7;
  std::string cipher(plain.size() + 16, ' ');
  int count = 0, rest = 0;
  EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
  auto* out = reinterpret_cast<unsigned char*>(cipher.data());
  EVP_EncryptInit_ex(context, EVP_aes_128_cbc(), nullptr, reinterpret_cast<const unsigned char*>(key.data()),
                     iv.data());
  EVP_EncryptUpdate(context, out, &count, reinterpret_cast<const unsigned char*>(plain.data()),
                    static_cast<int>(plain.size()));
  EVP_EncryptFinal_ex(context, out + count, &rest);
  EVP_CIPHER_CTX_free(context);
  cipher.resize(static_cast<std::size_t>(count + rest));
  put("/low0", cipher);
  put("/key", key);
  const std::string list =
      "#EXTM3U\n#EXT-X-TARGETDURATION:6\n#EXT-X-MEDIA-SEQUENCE:7\n#EXT-X-KEY:METHOD=AES-128,URI=\"key\"\n"
      "#EXTINF:6,\nlow0\n#EXT-X-ENDLIST";
  run(10s, list);
  EXPECT_EQ(told, "low0 over");
  loader.reset();
  store = ByteStore::make(16 << 20);
  site.pages.erase("/key");
  run(10s, list);
  ASSERT_TRUE(store->failure());
  EXPECT_THAT(store->failure()->message, HasSubstr("key"));
}

TEST_F(Loader, beginsThreeSegmentsFromTheEdgeAndReloadsAtThePaceOfTheList) {
  const auto live = [this](int first) { return film("low", 6 + first, "").replace(7, 0, "\n#EXT-X-MEDIA-SEQUENCE:0"); };
  site.pages["/live.m3u8"] = [&] { return Page{live(static_cast<int>((now - 100s) / 6s))}; };
  site.pages.erase("/low6");
  run(60s, live(0), "live.m3u8");
  EXPECT_THAT(told, testing::StartsWith("low3 low4 low5 hole low7 low8 low9 ")) << "one stays missing";
  EXPECT_TRUE(facts.isLive);
  EXPECT_LE(site.count("/live.m3u8"), 21u);
  site.pages["/live.m3u8"] = [] { return Page{"<html>"}; };
  const auto before = site.log.size();
  run(60s, live(0));
  EXPECT_LE(site.log.size() - before, 20u) << "a list that has gone bad is asked for less and less";
}

// In turn: a variant's list stops growing, all lists are junk for 18 s, and the server counts anew.
TEST_F(Loader, goesOnWithALiveProgrammeThatBendsForAWhile) {
  for (const std::string name : {"low", "high"}) {
    site.pages["/" + name + ".m3u8"] = [this, name] {
      const int age = static_cast<int>((now - 100s) / 6s);
      if (age >= 9 && age < 12) return Page{"<html>"};
      const int count = age >= 14 ? age - 10 : name == "high" ? std::min(age, 1) + 6 : age + 6;
      return Page{film(age >= 14 ? "new" : name, count, "")
                      .insert(7, age >= 14 ? "\n#EXT-X-MEDIA-SEQUENCE:0" : "\n#EXT-X-MEDIA-SEQUENCE:100")};
    };
  }
  for (int i = 0; i < 20; ++i) put("/new" + std::to_string(i), segment("new" + std::to_string(i)));
  run(140s, master);
  EXPECT_FALSE(store->failure());
  EXPECT_THAT(told, testing::MatchesRegex("high3 high4 high5 high6 low7 .*low17 .*new1 new2 new3 new4 new5 new6 .*"));
}

}  // namespace
