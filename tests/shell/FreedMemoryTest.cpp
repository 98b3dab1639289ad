#include "shell/FreedMemory.h"

#include "tests/support/Waiting.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QList>

#include <gtest/gtest.h>

#include <unistd.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// What the process has in memory, in bytes.
qint64 residentBytes()
{
    QFile file(u"/proc/self/statm"_s);
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE) : 0;
}

} // namespace

TEST(FreedMemoryTest, WhatWasFreedBetweenBlocksThatStayGoesBackToTheSystem)
{
#if !defined(__GLIBC__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "another allocator";
#endif
    FreedMemory memory(0ms, 0ms);
    constexpr int kBlock = 30'000;     // bytes; like a piece of a document
    constexpr qint64 kMuch = 40 << 20; // bytes, of 60 MB
    const qint64 before = residentBytes();
    QList<QByteArray> dropped, kept;
    for (int i = 0; i < 2000; ++i) {
        dropped.append(QByteArray(kBlock, 'x'));
        kept.append(QByteArray(100, 'x'));
    }
    dropped.clear();
    ASSERT_GT(residentBytes(), before + kMuch) << "the allocator keeps it";

    memory.giveBackSoon();

    EXPECT_TRUE(eventually([&] { return residentBytes() < before + kMuch / 2; }));
}

} // namespace Tessaline
