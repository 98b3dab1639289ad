#include "editing/TextTransfer.h"

#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtCore/QUrl>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

TEST(TextTransfer, CarriesTheCharactersOfItsRange)
{
    const TextTransfer transfer(ChunkedText(u"one\r\ntwo\u2028three"_s), {1, 9});

    EXPECT_TRUE(transfer.hasText());
    EXPECT_EQ(transfer.text(), u"ne\r\ntwo\u2028t"_s);
    EXPECT_EQ(transfer.formats(), QStringList{u"text/plain"_s});
}

TEST(TextTransfer, GivesBytesInUtf8)
{
    const TextTransfer transfer(ChunkedText(u"é\U0001F600"_s), {0, 3});

    EXPECT_EQ(transfer.data(u"text/plain"_s), QByteArray("\xC3\xA9\xF0\x9F\x98\x80"));
}

TEST(TextTransfer, HasNothingElse)
{
    const TextTransfer transfer(ChunkedText(u"file:///tmp/a"_s), {0, 13});

    EXPECT_FALSE(transfer.hasHtml());
    EXPECT_FALSE(transfer.hasUrls());
    EXPECT_FALSE(transfer.hasImage());
    EXPECT_TRUE(transfer.data(u"text/html"_s).isEmpty());
}

TEST(TextTransfer, IsASnapshot)
{
    ChunkedText text(u"before"_s);
    const TextTransfer transfer(text, {0, 6});

    text.replace(0, 6, u"after");

    EXPECT_EQ(transfer.text(), u"before"_s);
}

TEST(PlainTextOfATransfer, IsItsPlainTextOrWhatItsHtmlShows)
{
    QMimeData html;
    html.setHtml(u"a<br>b <i>c</i> <img src='x.png'>d"_s);
    EXPECT_TRUE(hasPlainText(html));
    EXPECT_EQ(plainTextOf(html), u"a\nb c d"_s);

    QMimeData both;
    both.setHtml(u"<b>rich</b>"_s);
    both.setText(u"plain"_s);
    EXPECT_EQ(plainTextOf(both), u"plain"_s);

    EXPECT_FALSE(hasPlainText(QMimeData()));
    EXPECT_EQ(plainTextOf(QMimeData()), QString());
}

} // namespace Tessaline
