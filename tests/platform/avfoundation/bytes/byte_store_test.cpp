#include "platform/avfoundation/bytes/ByteStore.h"

#include <gmock/gmock.h>

TEST(ByteStore, isThere) {
  EXPECT_TRUE(ByteStore::make(1 << 20));
}
