#include "Services/ServerLog.h"

#include "tests/support/TemporaryFiles.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QRegularExpression>
#include <QtCore/QScopeGuard>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

constexpr auto kPrivate =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser | QFileDevice::WriteUser;

class ServerLogFile : public ::testing::Test
{
protected:
    QByteArray contents() const { return m_files.read(u"deep/data/server.log"_s); }

    TemporaryFiles m_files;
    ServerLog m_log{m_files.url(u"deep/data"_s)};
};

TEST_F(ServerLogFile, HasAnEntryWithItsTimeForEachText)
{
    const QDateTime before = QDateTime::currentDateTime();
    m_log.append(u"one"_s);
    m_log.append(u"two\nlines, ü"_s);
    m_log.append(QString());
    const QDateTime after = QDateTime::currentDateTime();

    const QRegularExpression entries(
        u"^\\[([-: 0-9]{19})\\] one\n\\[[-: 0-9]{19}\\] two\nlines, ü\n\\[[-: 0-9]{19}\\] \n$"_s);
    const QRegularExpressionMatch match = entries.match(QString::fromUtf8(contents()));
    ASSERT_TRUE(match.hasMatch()) << contents().constData();
    const QDateTime time = QDateTime::fromString(match.captured(1), u"yyyy-MM-dd HH:mm:ss"_s);
    EXPECT_GE(time.addSecs(1), before);
    EXPECT_LE(time, after);
}

TEST_F(ServerLogFile, IsForTheUserAlone)
{
    m_log.append(u"one"_s);

    EXPECT_EQ(QFile::permissions(m_files.url(u"deep/data/server.log"_s).path()), kPrivate);
    EXPECT_EQ(QFile::permissions(m_files.url(u"deep/data"_s).path()),
              kPrivate | QFileDevice::ExeOwner | QFileDevice::ExeUser);
}

TEST_F(ServerLogFile, WritesTheTimeInTheDigitsOfTheUsersLanguage)
{
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    const auto restore = qScopeGuard([] { QLocale::setDefault(QLocale::system()); });

    m_log.append(u"one"_s);

    EXPECT_TRUE(QString::fromUtf8(contents()).startsWith(u"[٢٠"_s)) << contents().constData();
}

TEST_F(ServerLogFile, StartsAnewWhenItIsReset)
{
    m_log.append(u"one"_s);
    m_log.reset();
    EXPECT_FALSE(m_files.exists(u"deep/data/server.log"_s));
    m_log.reset(); // there is none

    m_log.append(u"two"_s);

    EXPECT_FALSE(contents().contains("one"));
    EXPECT_TRUE(contents().endsWith("] two\n"));
}

TEST_F(ServerLogFile, DropsEntriesThatItCannotWrite)
{
    m_files.makeFolder(u"deep/data/server.log/inside"_s); // neither deleted nor opened
    m_log.reset();
    m_log.append(u"one"_s);
    EXPECT_TRUE(m_files.exists(u"deep/data/server.log/inside"_s));

    const ServerLog inAPipe(m_files.url(u"pipes"_s));
    m_files.makeFolder(u"pipes"_s);
    ASSERT_EQ(mkfifo(qPrintable(m_files.url(u"pipes/server.log"_s).path()), 0600), 0);
    inAPipe.append(u"one"_s); // nobody reads it, and nobody is waited for

    m_files.write(u"file"_s, "");
    const ServerLog inAFile(m_files.url(u"file/data"_s));
    inAFile.append(u"one"_s);
    inAFile.reset();

    const ServerLog nowhere(std::nullopt);
    nowhere.append(u"one"_s);
    nowhere.reset();
}

TEST(ServerOutputText, IsTrimmedTextOfWholeUtf8)
{
    const struct {
        QByteArray bytes;
        std::optional<QString> text;
    } cases[]{
        {"ready", u"ready"_s},
        {"  \t\r\n ready \n now \n\n", u"ready \n now"_s},
        {"\xc2\xa0\xe2\x80\xa8"
         "a\xe3\x80\x80",
         u"a"_s}, // white space beyond ASCII
        {"\n", QString()},
        {"", std::nullopt},
        {"caf\xc3\xa9", u"café"_s},
        {"caf\xc3", std::nullopt}, // ends within a character
        {"\xa9 and more", std::nullopt},
        {"a\xff", std::nullopt},
        {"\xed\xa0\x80", std::nullopt}, // half a pair
        {"\xf0\x9f\x98\x80", u"😀"_s},
        {"\xf0\x9f\x98", std::nullopt},
    };

    for (const auto &[bytes, text] : cases)
        EXPECT_EQ(serverOutputText(bytes), text) << bytes.toHex(' ').constData();
}

} // namespace
} // namespace Tessaline
