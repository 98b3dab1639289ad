#include "foundation/SystemMemory.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

constexpr quint64 kMiB = 1024 * 1024;

/// A machine that lists `count` blocks of 128 MiB.
quint64 memoryOf(int count, quint64 usable)
{
    const TemporaryFiles files{{u"block_size_bytes"_s, "8000000\n"}, {u"auto_online_blocks"_s, "online"}};
    for (int index = 0; index < count; ++index)
        files.makeFolder(u"memory%1"_s.arg(index));
    return physicalMemoryBytes(usable, files.folder());
}

TEST(SystemMemory, IsWhatIsBuiltInRatherThanWhatTheSystemHandsOut)
{
    EXPECT_EQ(memoryOf(128, 15900 * kMiB), 16384 * kMiB);
    EXPECT_EQ(memoryOf(128, 16384 * kMiB), 16384 * kMiB);
}

TEST(SystemMemory, IsWhatTheSystemHandsOutWhereTheBlocksAreSomethingElse)
{
    EXPECT_EQ(memoryOf(0, 4000 * kMiB), 4000 * kMiB);
    EXPECT_EQ(memoryOf(16, 4000 * kMiB), 4000 * kMiB) << "blocks are hidden";
    EXPECT_EQ(memoryOf(128, 4000 * kMiB), 4000 * kMiB) << "memory that could be plugged in";
    EXPECT_EQ(physicalMemoryBytes(4000 * kMiB, FileURL(u"/nowhere"_s)), 4000 * kMiB);
}

TEST(SystemMemory, OfThisMachineIsSensible)
{
    EXPECT_GT(physicalMemoryBytes(), 256 * kMiB);
    EXPECT_LT(physicalMemoryBytes(), quint64(1) << 50);
}

} // namespace
} // namespace Tessaline
