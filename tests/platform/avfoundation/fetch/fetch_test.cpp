// What is asked of a server and when, on virtual time, with a server that is played.
#include <gmock/gmock.h>

#include "tests/support/FetchRig.h"

using namespace std::chrono_literals;
using Outcome = MediaBytes::Outcome;
using Request = PlayedServer::Request;
using testing::ElementsAre;
using testing::Le;
using testing::SizeIs;

namespace {

// Milliseconds between requests.
std::vector<long> pauses(const std::vector<Request>& log) {
  std::vector<long> result;
  for (std::size_t i = 1; i < log.size(); ++i) {
    result.push_back(std::chrono::duration_cast<std::chrono::milliseconds>(log[i].at - log[i - 1].at).count());
  }
  return result;
}

std::vector<std::uint64_t> places(const std::vector<Request>& log) {
  std::vector<std::uint64_t> result;
  for (const Request& request : log) result.push_back(request.place);
  return result;
}

// The first requests are answered like this, the rest as by an able server.
void first(FetchRig& rig, std::vector<PlayedAnswer> answers) {
  rig.server.answer = [&rig, answers](const Request& request) {
    const std::size_t number = rig.server.log.size() - 1;
    return number < answers.size() ? answers[number] : rig.part(request.place);
  };
}

TEST(Fetch, beforeTheFirstAnswerOnlyABusyServerAndALostConnectionAreAskedAgain) {
  const auto later = [](long status, int seconds) {
    auto answer = FetchRig::refusal(status);
    answer.head.retryAfter = std::chrono::seconds(seconds);
    return answer;
  };
  const struct {
    PlayedAnswer answer;
    int code;
    std::vector<long> pauses;
  } rows[] = {
      {FetchRig::refusal(404), NSURLErrorFileDoesNotExist, {}},
      {FetchRig::refusal(403), NSURLErrorNoPermissionsToReadFile, {}},
      {FetchRig::refusal(204), NSURLErrorZeroByteResource, {}},
      {FetchRig::refusal(302), NSURLErrorRedirectToNonExistentLocation, {}},
      {FetchRig::refusal(206), NSURLErrorBadServerResponse, {}},  // a part without its place
      {FetchRig::lost(), NSURLErrorNetworkConnectionLost, {500, 1000}},
      {FetchRig::refusal(500), NSURLErrorBadServerResponse, {500, 1000}},
      {FetchRig::refusal(408), NSURLErrorResourceUnavailable, {500, 1000}},
      {later(429, 3), NSURLErrorResourceUnavailable, {3000, 3000}},
      {later(503, 3600), NSURLErrorResourceUnavailable, {8000, 8000}},
      {FetchRig::refusal(416), NSURLErrorBadServerResponse, {0}},  // a second time, without a range
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.answer.head.status);
    FetchRig rig;
    first(rig, std::vector(5, row.answer));
    EXPECT_EQ(rig.read(0, 1), 0u);
    EXPECT_EQ(rig.outcome, Outcome::failed);
    ASSERT_TRUE(rig.reader->failure());
    EXPECT_EQ(rig.reader->failure()->code, row.code);
    EXPECT_THAT(rig.reader->failure()->message, testing::HasSubstr("media.example"));
    EXPECT_EQ(pauses(rig.server.log), row.pauses);
    EXPECT_EQ(rig.server.open(), 0u);
  }
}

TEST(Fetch, goesOnWhereItStoppedAfterWhateverHappens) {
  FetchRig able;
  auto broken = able.part(0), cut = able.part(0), silent = able.part(0), partial = able.part(0);
  broken.behind = cut.behind = silent.behind = partial.behind = 100'000;
  broken.error = NSError{NSURLErrorDomain, NSURLErrorNetworkConnectionLost, ""};
  silent.isSilent = true;
  partial.head.headers["content-range"] = "bytes 0-99999/3000000";
  auto longPart = partial, longFilm = able.part(0);
  longPart.behind = longFilm.behind = std::uint64_t{1} << 40;
  auto wait = FetchRig::refusal(503);
  wait.head.retryAfter = 5s;
  const struct {
    const char* name;
    std::vector<PlayedAnswer> answers;
    std::vector<long> pauses;
  } rows[] = {
      {"lost", {broken}, {0}},
      {"a short body", {cut}, {0}},
      {"silence", {silent}, {10'000}},
      {"as much as the server gives at a time", {partial}, {0}},
      {"more than it said, of a part", {longPart}, {0}},
      {"more than it said, of the film", {longFilm}, {}},
      {"a long outage",
       {broken, able.lost(), able.lost(), able.lost(), able.lost(), able.lost()},
       {0, 50, 100, 200, 400, 800}},
      {"a server under repair", {broken, able.refusal(500), wait, able.refusal(429)}, {0, 50, 5000, 4000}},
      {"a hiccup", {broken, able.refusal(404), able.refusal(403)}, {0, 1000, 2000}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    FetchRig rig;
    first(rig, row.answers);
    EXPECT_EQ(rig.read(0, rig.length + 1), rig.length);
    EXPECT_EQ(rig.outcome, Outcome::ended);
    rig.step(0s);
    EXPECT_EQ(rig.server.open(), 0u);
    EXPECT_EQ(pauses(rig.server.log), row.pauses);
    for (std::size_t i = 1; i < rig.server.log.size(); ++i) {
      EXPECT_EQ(rig.server.log[i].place, 100'000u);
      EXPECT_EQ(rig.server.log[i].ifRange, "\"one\"");
    }
  }
}

TEST(Fetch, pausesGrowWhileWhatIsHerePlaysAndEndWhenItHasBeenPlayed) {
  FetchRig rig;
  auto cut = rig.part(0);
  cut.behind = 100'000;
  first(rig, {cut, rig.lost(), rig.lost(), rig.lost(), rig.lost(), rig.lost(), rig.lost()});
  rig.pass(29s);
  EXPECT_EQ(rig.read(100'000, 1), 1u);
  EXPECT_THAT(pauses(rig.server.log), ElementsAre(500, 1000, 2000, 4000, 8000, 8000, 5500));
}

TEST(Fetch, aLiveStreamGoesOnWithWhatItSendsByNowAndAFilmWhereItStopped) {
  for (const std::uint64_t begin : {0, 2'000'000}) {
    FetchRig rig;
    auto cut = rig.whole(), again = rig.whole();
    cut.head.length.reset(), again.head.length.reset();
    cut.behind = 100'000;
    cut.error = rig.lost().error;
    again.from = begin;
    rig.server.answer = [&](const Request&) { return rig.server.log.size() > 1 ? again : cut; };
    EXPECT_EQ(rig.read(0, 100'000), 100'000u);
    rig.read(100'000, 1);
    std::byte next{};
    std::size_t count = 0;
    ASSERT_EQ(rig.reader->read(100'000, {&next, 1}, count), Outcome::done);
    EXPECT_EQ(next, byteAt(begin == 0 ? 100'000 : begin));
  }
}

TEST(Fetch, tellsOfARefusalOnlyWhoeverWantsWhatIsNotHere) {
  FetchRig rig;
  rig.server.answer = [&](const Request& request) {
    auto answer = request.place == 0 ? rig.part(0) : rig.refusal(404);
    answer.behind = std::min<std::uint64_t>(answer.behind, 1'000'000);
    return answer;
  };
  rig.pass(30s);
  EXPECT_GE(rig.server.log.size(), 4u);
  EXPECT_FALSE(rig.reader->failure());
  EXPECT_TRUE(rig.reader->isFull()) << "what is here may as well be played";
  EXPECT_EQ(rig.read(0, rig.length), 1'000'000u);
  EXPECT_EQ(rig.outcome, Outcome::failed);
  EXPECT_EQ(rig.reader->failure()->code, NSURLErrorFileDoesNotExist);

  FetchRig back;  // and it may have come back by then
  back.server.answer = [&](const Request& request) {
    auto answer = request.place == 0 || back.server.now > 20s ? back.part(request.place) : back.refusal(404);
    if (request.place == 0) answer.behind = 1'000'000;
    return answer;
  };
  back.length = 30'000'000;
  back.pass(24s);
  EXPECT_EQ(back.read(0, 1'000'000), 1'000'000u);
  EXPECT_EQ(back.read(1'000'000, back.length), back.length - 1'000'000);
}

TEST(Fetch, aChangedFileIsAnErrorAndAnotherNameForItIsNot) {
  const std::pair<std::function<void(HTTPAnswer&)>, bool> rows[] = {
      {[](HTTPAnswer& head) { head.headers["etag"] = "\"two\""; }, true},
      {[](HTTPAnswer& head) { head.headers["content-range"] = "bytes 100000-2999999/3000001"; }, true},
      {[](HTTPAnswer& head) { head.headers.erase("etag"), head.headers["last-modified"] = "later"; }, true},
      {[](HTTPAnswer& head) { head.headers["etag"] = "W/\"one\"", head.headers["last-modified"] = "later"; }, false},
      {[](HTTPAnswer& head) { head.headers["content-range"] = "bytes 100000-2999999/*"; }, false},
  };
  for (const auto& [change, isOther] : rows) {
    FetchRig rig;
    rig.server.answer = [&, &change = change](const Request& request) {
      auto answer = rig.part(request.place);
      answer.head.headers["last-modified"] = "once";
      if (request.place == 0) answer.behind = 100'000;
      if (request.place > 0) change(answer.head);
      return answer;
    };
    EXPECT_EQ(rig.read(0, rig.length), isOther ? 100'000 : rig.length);
    EXPECT_EQ(rig.reader->failure().has_value(), isOther);
  }
}

TEST(Fetch, aWholeAnswerToAPartIsPassedThroughWhenThatIsShortOrTheOnlyWay) {
  const auto play = [](std::uint64_t place, bool servesRanges) {
    FetchRig rig;
    rig.length = 30'000'000;
    rig.server.answer = [&](const Request& request) {
      return request.place == 0 && servesRanges ? rig.part(0) : rig.whole();
    };
    EXPECT_EQ(rig.read(0, 1000), 1000u);
    EXPECT_EQ(rig.read(place, 1000), 1000u);
    EXPECT_EQ(rig.read(500, 1000), 1000u) << "and back";
    return places(rig.server.log);
  };
  EXPECT_THAT(play(9'000'000, true), ElementsAre(0, 9'000'000, 9'000'000, 9'000'000))
      << "the first lane is still there";
  EXPECT_THAT(play(29'000'000, false), ElementsAre(0, 0)) << "on through the first answer, and again from the start";
}

TEST(Fetch, twoPlacesAreReadInTurnsOverTwoConnectionsWithinTheMemoryThereIs) {
  FetchRig rig;
  rig.length = std::uint64_t{1} << 40;
  const std::uint64_t far = rig.length / 2, part = 300'000;
  for (std::uint64_t done = 0; done < 40'000'000; done += part) {
    ASSERT_EQ(rig.read(done, part), part);
    ASSERT_EQ(rig.read(far + done, part), part);
    ASSERT_LE(rig.store->heldCount(0) + rig.store->heldCount(1), rig.store->chunkCount());
  }
  EXPECT_THAT(places(rig.server.log), ElementsAre(0, far));
  EXPECT_EQ(rig.read(7, 1), 1u);  // the lane that was used longest ago goes there, the other one stays
  EXPECT_EQ(rig.read(far + 39'999'999, 1), 1u);
  EXPECT_THAT(places(rig.server.log), ElementsAre(0, far, 7));
  EXPECT_EQ(rig.read(8, 1), 1u);
  rig.control().place = 1'000'000'000;  // much comes before a reader that waits has seen the first of it
  rig.control().isWaiting = 1;
  rig.pass(1s);
  EXPECT_EQ(rig.read(1'000'000'000, 1'000'000), 1'000'000u);
  EXPECT_THAT(places(rig.server.log), ElementsAre(0, far, 7, 1'000'000'000));
}

TEST(Fetch, isNotHurriedByAServerThatSendsNextToNothing) {
  FetchRig rig;
  rig.server.answer = [&](const Request& request) {
    auto answer = rig.part(request.place);
    answer.behind = request.place + 1;
    const std::string place = std::to_string(request.place);
    answer.head.headers["content-range"] = "bytes " + place + "-" + place + "/" + std::to_string(rig.length);
    return answer;
  };
  EXPECT_GT(rig.read(0, 10'000), 20u) << "but it is asked on";
  EXPECT_LT(rig.server.log.size(), 200u) << "in a minute";
}

TEST(Fetch, aReaderThatTakesOverFindsWhatTheOneBeforeItLeft) {
  FetchRig rig;
  rig.length = 1'000'000'000;
  rig.read(0, 100'000);
  rig.read(rig.length - 1000, 1000);  // the index
  const std::uint64_t place = 200'000'000;
  rig.read(place, 3'000'000);
  rig.pass(2s);
  rig.reader = rig.store->makeReader();
  rig.reader->setInterrupted(true);
  rig.server.log.clear();
  EXPECT_EQ(rig.read(0, 100'000), 100'000u);
  rig.pass(100ms);
  EXPECT_EQ(rig.read(rig.length - 1000, 1000), 1000u);
  EXPECT_EQ(rig.read(place + 2'900'000, 1'000'000), 1'000'000u);
  EXPECT_THAT(places(rig.server.log), ElementsAre(0, rig.length - 1000));
}

TEST(Fetch, fillsUpToTheLimitThenWaitsAndAServerThatClosesMeanwhileIsNoFailure) {
  FetchRig rig(64 << 20);
  rig.length = 1'000'000'000;
  rig.reader->setAheadLimit(4'000'000);
  rig.server.answer = [&](const Request& request) {
    auto answer = rig.part(request.place);
    answer.behind = request.place + 5'000'000;  // it is closed there, when that is read
    answer.error = NSError{NSURLErrorDomain, NSURLErrorNetworkConnectionLost, ""};
    return answer;
  };
  rig.pass(1min);
  EXPECT_TRUE(rig.reader->isFull());
  EXPECT_NEAR(static_cast<double>(rig.reader->ahead(0)), 4'000'000, 100'000);
  EXPECT_THAT(rig.server.log, SizeIs(1)) << "no time-out";
  EXPECT_EQ(rig.read(0, 900'000), 900'000u);
  rig.step(0s);
  EXPECT_TRUE(rig.reader->isFull()) << "not at every byte";
  EXPECT_EQ(rig.read(0, 3'900'000), 3'900'000u);
  rig.step(0s);
  EXPECT_FALSE(rig.reader->isFull());
  EXPECT_LE(rig.store->heldCount(0) * ByteStore::chunkBytes, 5'500'000u) << "what was read is not kept for long";
}

TEST(Fetch, aBodyOfUnknownLengthIsAsLongAsItIs) {
  FetchRig rig;
  rig.server.answer = [&](const Request&) {
    auto answer = rig.whole();
    answer.head.length = 1'000'000;  // as it was sent
    answer.head.headers["content-encoding"] = "gzip";
    return answer;
  };
  EXPECT_EQ(rig.read(0, rig.length + 1), rig.length);
  EXPECT_EQ(rig.outcome, Outcome::ended);
  MediaBytes::Head head;
  rig.reader->head(head);
  EXPECT_FALSE(head.length || head.isSeekable);

  FetchRig empty;
  first(empty, {empty.refusal(416)});
  auto nothing = empty.refusal(416);
  nothing.head.headers["content-range"] = "bytes */0";
  first(empty, {nothing});
  EXPECT_EQ(empty.read(0, 1), 0u);
  EXPECT_EQ(empty.outcome, Outcome::ended);
}

}  // namespace
