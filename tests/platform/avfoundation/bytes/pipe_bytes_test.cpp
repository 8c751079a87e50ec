#include "platform/avfoundation/bytes/PipeBytes.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <thread>

using Outcome = MediaBytes::Outcome;

namespace {

std::string read(MediaBytes& bytes, std::uint64_t place, Outcome expected = Outcome::done) {
  std::byte target[100];
  std::size_t count = 0;
  EXPECT_EQ(bytes.read(place, target, count), expected);
  return {reinterpret_cast<const char*>(target), count};
}

TEST(PipeBytes, comeOnceInTheirOrder) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const auto pipe = PipeBytes::make(Descriptor(ends[0]), "file:///pipe");
  EXPECT_EQ(::write(ends[1], "0123456789", 10), 10);
  EXPECT_EQ(read(*pipe, 4), "456789");
  read(*pipe, 3, Outcome::failed);
  EXPECT_TRUE(pipe->failure());
  ::close(ends[1]);
  read(*pipe, 10, Outcome::ended);
  EXPECT_FALSE(PipeBytes::make(PipeBytes::open(testing::TempDir()), ""));
  EXPECT_FALSE(PipeBytes::make(PipeBytes::open("/proc/self/exe"), "")) << "a file";
}

TEST(PipeBytes, waitsForAWriterUntilItIsInterrupted) {
  const std::string path = testing::TempDir() + "fifo" + std::to_string(::getpid());
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  const auto fifo = PipeBytes::make(PipeBytes::open(path), "file://" + path);
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
