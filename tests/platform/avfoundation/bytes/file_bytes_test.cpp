#include "platform/avfoundation/bytes/FileBytes.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <fstream>
#include <thread>

using Outcome = MediaBytes::Outcome;

namespace {

std::string read(MediaBytes& bytes, std::uint64_t place, Outcome expected = Outcome::done) {
  std::byte target[100];
  std::size_t count = 0;
  EXPECT_EQ(bytes.read(place, target, count), expected);
  return {reinterpret_cast<const char*>(target), count};
}

TEST(FileBytes, readsAFileAnywhereAndAPipeOnce) {
  const std::string path = testing::TempDir() + "bytes" + std::to_string(::getpid());
  std::ofstream(path) << "0123456789";
  const auto file = FileBytes::make(FileBytes::open(path), "file://" + path);
  MediaBytes::Head head;
  EXPECT_EQ(file->head(head), Outcome::done);
  EXPECT_EQ(head.length, 10u);
  EXPECT_EQ(read(*file, 7), "789");
  EXPECT_EQ(read(*file, 3), "3456789");
  read(*file, 10, Outcome::ended);
  ::unlink(path.c_str());

  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const auto pipe = FileBytes::make(Descriptor(ends[0]), "file:///pipe");
  EXPECT_EQ(::write(ends[1], "0123456789", 10), 10);
  EXPECT_EQ(read(*pipe, 4), "456789");
  read(*pipe, 3, Outcome::failed);
  EXPECT_TRUE(pipe->failure());
  ::close(ends[1]);
  read(*pipe, 10, Outcome::ended);
  EXPECT_FALSE(FileBytes::make(FileBytes::open(testing::TempDir()), ""));
}

TEST(FileBytes, waitsForAWriterUntilItIsInterrupted) {
  const std::string path = testing::TempDir() + "fifo" + std::to_string(::getpid());
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  const auto fifo = FileBytes::make(FileBytes::open(path), "file://" + path);
  std::thread waiting([&] { read(*fifo, 0, Outcome::interrupted); });
  fifo->setInterrupted(true);
  waiting.join();
  fifo->setInterrupted(false);
  std::thread reading([&] { EXPECT_EQ(read(*fifo, 0), "film"); });
  const Descriptor writer(::open(path.c_str(), O_WRONLY));
  EXPECT_EQ(::write(writer.get(), "film", 4), 4);
  reading.join();
  ::unlink(path.c_str());
}

}  // namespace
