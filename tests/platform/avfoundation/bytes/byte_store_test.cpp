#include "platform/avfoundation/bytes/ByteStoreReader.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <cerrno>
#include <numeric>
#include <random>
#include <thread>

using Outcome = MediaBytes::Outcome;

namespace {

std::byte byteAt(std::uint64_t place) {
  return static_cast<std::byte>((place * 0x9E3779B97F4A7C15) >> 56);
}

std::vector<std::byte> bytesAt(std::uint64_t place, std::size_t count) {
  std::vector<std::byte> bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = byteAt(place + i);
  return bytes;
}

ByteStoreDescriptors copies(const ByteStore& store) {
  const auto copy = [](int descriptor) { return ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0); };
  const auto all = store.descriptors();
  return {copy(all.memory), copy(all.control), copy(all.wake)};
}

constexpr std::size_t places = 600'000;
const std::vector<std::byte> film = bytesAt(0, 2 * places);

// Reads whatever there is of a film whose lanes are moved about all the time, until bytes came often enough; returns
// how often they were wrong.
int wrongReads(MediaBytes& reader) {
  std::minstd_rand random(1);
  std::vector<std::byte> bytes(200'000);
  int wrong = 0;
  for (int came = 0; came < 5000;) {
    const std::uint64_t place = random() % places;
    std::size_t count = 0;
    if (reader.read(place, bytes, count) != Outcome::done) continue;
    ++came;
    wrong += !std::equal(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count),
                         film.begin() + static_cast<std::ptrdiff_t>(place));
  }
  return wrong;
}

TEST(ByteStore, givesBytesInTheOrderOfPlacesAndForgetsThemWhenToldTo) {
  const auto store = ByteStore::make(8 * ByteStore::chunkBytes);
  const auto reader = store->makeReader();
  reader->setInterrupted(true);  // so that nothing waits
  store->move(1, 100'000);
  const auto bytes = bytesAt(100'000, 300'000);
  EXPECT_TRUE(store->append(1, bytes));
  EXPECT_FALSE(store->append(1, std::vector<std::byte>(300'000))) << "all or nothing";
  EXPECT_EQ(reader->ahead(100'000), 300'000u);
  std::vector<std::byte> target(500'000);
  std::size_t count = 0;
  EXPECT_EQ(reader->read(100'000, target, count), Outcome::done);
  EXPECT_EQ(count, 300'000u);
  EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), target.begin()));

  store->trim(1, 250'000);
  EXPECT_EQ(reader->read(100'000, target, count), Outcome::interrupted);
  EXPECT_EQ(reader->read(250'000, target, count), Outcome::done);
  EXPECT_EQ(store->demand().lane[1].place, 400'000u);
  store->move(1, 0);
  EXPECT_EQ(store->freeCount(), store->chunkCount());
  EXPECT_EQ(reader->ahead(250'000), 0u);

  store->tellEnd(500'000);
  EXPECT_EQ(reader->read(500'000, target, count), Outcome::ended);
  store->tellFailure({"domain", 7, std::string(3000, 'x') + "\u00e4"});
  EXPECT_EQ(reader->read(0, target, count), Outcome::failed);
  EXPECT_EQ(reader->failure()->code, 7);
}

TEST(ByteStore, whoeverReadsCanNeitherWriteNorCutOffWhatItReads) {
  const auto store = ByteStore::make(1 << 20);
  const Descriptor memory(copies(*store).memory), control(copies(*store).control);
  for (const int descriptor : {memory.get(), control.get()}) {
    EXPECT_NE(::ftruncate(descriptor, 0), 0);
    EXPECT_NE(::ftruncate(descriptor, 1 << 30), 0);
  }
  EXPECT_EQ(::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, memory.get(), 0), MAP_FAILED);
  EXPECT_LT(::pwrite(memory.get(), "x", 1, 0), 0);
  EXPECT_FALSE(ByteStoreReader::adopt({::open("/dev/null", O_RDONLY), -1, -1}));
}

TEST(ByteStore, aReadIsNeverTornThoughItsPlaceIsGivenUpMeanwhileInThisProcessOrAnother) {
  const auto store = ByteStore::make(8 * ByteStore::chunkBytes);
  const ByteStoreDescriptors sent = copies(*store);
  const pid_t child = ::fork();
  if (child == 0) {
    const auto reader = ByteStoreReader::adopt(sent);
    reader->setInterrupted(true);
    ::_exit(wrongReads(*reader) == 0 ? 0 : 1);
  }
  const auto reader = store->makeReader();
  reader->setInterrupted(true);
  std::atomic<bool> isDone = false;
  int wrong = 0, status = 1;
  std::thread reading([&] {
    wrong = wrongReads(*reader);
    ::waitpid(child, &status, 0);
    isDone = true;
  });
  std::minstd_rand random(2);
  while (!isDone) {
    const std::size_t lane = random() % ByteStore::lanes;
    if (random() % 4 == 0) store->move(lane, random() % places);
    if (random() % 4 == 0) store->trim(lane, store->end(lane));
    if (store->end(lane) < places) store->append(lane, std::span(film).subspan(store->end(lane), random() % 30'000));
  }
  reading.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(status, 0);
}

TEST(ByteStore, whoeverWaitsIsWokenByBytesByFailureAndByAnInterruption) {
  const auto store = ByteStore::make(1 << 20);
  const auto reader = store->makeReader();
  std::vector<std::byte> target(1000);
  std::size_t count = 0;
  const auto outcomeAfter = [&](const std::function<void()>& act) {
    reader->setInterrupted(false);
    Outcome outcome = Outcome::ended;
    const std::uint64_t place = store->end(0);
    std::thread waiting([&] { outcome = reader->read(place, target, count); });
    while (!store->demand().isWaiting) std::this_thread::yield();
    act();
    waiting.join();
    EXPECT_FALSE(store->demand().isWaiting);
    return outcome;
  };
  EXPECT_EQ(outcomeAfter([&] { store->append(0, bytesAt(0, 10)); }), Outcome::done);
  EXPECT_EQ(count, 10u);
  EXPECT_EQ(outcomeAfter([&] { reader->setInterrupted(true); }), Outcome::interrupted);
  EXPECT_EQ(outcomeAfter([&] { store->tellFailure({"domain", 1, "gone"}); }), Outcome::failed);
}

}  // namespace
