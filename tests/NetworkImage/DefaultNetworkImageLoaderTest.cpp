#include "NetworkImage/DefaultNetworkImageLoader.h"

#include "NetworkImage/DefaultNetworkImageCache.h"
#include "NetworkImage/ImageSession.h"
#include "tests/NetworkImage/ImageServer.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QThread>

using namespace NetworkImage;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Tessaline::eventually;
using Tessaline::finishes;
using Ending = ImageServer::Ending;

namespace {

constexpr QRgb kRed = 0xFFFF0000;
constexpr QRgb kBlue = 0xFF0000FF;

/// A loader, the server that it asks, and a folder for what it keeps.
class DefaultNetworkImageLoaderTest : public testing::Test
{
protected:
    DefaultNetworkImageLoaderTest() { m_options.cacheFolder = m_files.url(u"images"_s); }

    NetworkImageLoader &loader()
    {
        if (!m_loader)
            restart();
        return *m_loader;
    }

    /// As a new start of the program, with what is on the disk.
    void restart(int countLimit = DefaultNetworkImageCache::kCountLimit)
    {
        m_loader = std::make_unique<DefaultNetworkImageLoader>(
            [options = m_options] { return std::make_unique<ImageSession>(options); },
            std::make_unique<DefaultNetworkImageCache>(countLimit));
    }

    ImageResult load(const QUrl &url)
    {
        const QFuture<ImageResult> future = loader().image(url);
        if (!finishes(future))
            ADD_FAILURE() << "no result for " << url.toString().toStdString();
        return future.result();
    }
    ImageResult load(const QByteArray &path) { return load(m_server.url(path)); }

    void setImage(const QByteArray &path, QRgb colour, const QByteArray &headers = {})
    {
        m_server.setAnswer(path, {"200 OK", imageFile(colour), headers});
    }

    Tessaline::TemporaryFiles m_files;
    ImageServer m_server;
    ImageSessionOptions m_options;
    std::unique_ptr<NetworkImageLoader> m_loader;
};

/// The colour of an image, or 0 if there is none.
QRgb colourOf(const ImageResult &result)
{
    const QImage *const image = std::get_if<QImage>(&result);
    return image ? image->pixel(0, 0) : 0;
}

} // namespace

TEST_F(DefaultNetworkImageLoaderTest, GivesTheDecodedImage)
{
    setImage("/a.png", kRed);
    const ImageResult result = load("/a.png");
    ASSERT_TRUE(std::holds_alternative<QImage>(result));
    EXPECT_EQ(std::get<QImage>(result).size(), QSize(3, 2));
    EXPECT_EQ(colourOf(result), kRed);
    EXPECT_TRUE(m_server.lastRequest("/a.png").contains("\r\nAccept: image/*\r\n"));
}

TEST_F(DefaultNetworkImageLoaderTest, SharesOneDownloadAmongThoseWhoAskAtOnce)
{
    setImage("/a.png", kRed);
    QList<QFuture<ImageResult>> futures;
    for (int i = 0; i < 20; ++i)
        futures.append(loader().image(m_server.url("/a.png")));
    for (const QFuture<ImageResult> &future : futures) {
        ASSERT_TRUE(finishes(future));
        EXPECT_EQ(colourOf(future.result()), kRed);
    }
    EXPECT_EQ(m_server.requestCount("/a.png"), 1);
}

TEST_F(DefaultNetworkImageLoaderTest, GivesWhatItHasLoadedOnceMore)
{
    setImage("/a.png", kRed);
    load("/a.png");
    setImage("/a.png", kBlue);
    EXPECT_EQ(colourOf(load("/a.png")), kRed);
    EXPECT_EQ(m_server.requestCount("/a.png"), 1);
}

TEST_F(DefaultNetworkImageLoaderTest, AsksAgainAfterABadStatusAndKeepsNothingOfIt)
{
    EXPECT_EQ(load("/a.png"), ImageResult(URLError::BadServerResponse));
    EXPECT_EQ(load("/a.png"), ImageResult(URLError::BadServerResponse));
    EXPECT_EQ(m_server.requestCount("/a.png"), 2);

    for (const QByteArray status : {"400 Bad Request", "401 Unauthorized", "403 Forbidden", "500 Oops", "304 Same"}) {
        m_server.setAnswer("/bad.png", {status, imageFile(kRed)});
        EXPECT_EQ(load("/bad.png"), ImageResult(URLError::BadServerResponse)) << status.toStdString();
    }

    setImage("/a.png", kRed);
    EXPECT_EQ(colourOf(load("/a.png")), kRed);
}

TEST_F(DefaultNetworkImageLoaderTest, AsksAgainAfterBytesThatAreNoImage)
{
    m_server.setAnswer("/a.png", {"200 OK", "<html>Log in first</html>"});
    EXPECT_EQ(load("/a.png"), ImageResult(URLError::CannotDecodeContentData));
    EXPECT_EQ(load("/a.png"), ImageResult(URLError::CannotDecodeContentData));
    EXPECT_EQ(m_server.requestCount("/a.png"), 2);

    setImage("/a.png", kRed);
    restart();
    EXPECT_EQ(colourOf(load("/a.png")), kRed);
    m_server.setAnswer("/empty.png", {"200 OK", ""});
    EXPECT_EQ(load("/empty.png"), ImageResult(URLError::CannotDecodeContentData));
}

TEST_F(DefaultNetworkImageLoaderTest, StaysWithATimeOut)
{
    m_options.timeout = 500ms;
    m_server.setAnswer("/a.png", {"200 OK", imageFile(kRed), {}, Ending::Stalled});
    EXPECT_EQ(load("/a.png"), ImageResult(URLError::TimedOut));
    EXPECT_TRUE(eventually([this] { return m_server.openConnections() == 0; }));

    setImage("/a.png", kRed);
    EXPECT_EQ(load("/a.png"), ImageResult(URLError::TimedOut));
    EXPECT_LE(m_server.requestCount("/a.png"), 1);
}

TEST_F(DefaultNetworkImageLoaderTest, StaysWithAServerThatIsNotThere)
{
    ImageServer server(ImageServer::Start::Later);
    server.setAnswer("/a.png", {"200 OK", imageFile(kRed)});
    const QUrl url = server.url("/a.png");
    EXPECT_EQ(load(url), ImageResult(URLError::ConnectionFailed));

    server.open();
    EXPECT_EQ(load(url), ImageResult(URLError::ConnectionFailed));
    EXPECT_EQ(server.requestCount("/a.png"), 0);

    restart();
    EXPECT_EQ(colourOf(load(url)), kRed);
}

TEST_F(DefaultNetworkImageLoaderTest, TakesABodyThatEndsTooEarlyForABrokenConnection)
{
    m_server.setAnswer("/a.png", {"200 OK", imageFile(kRed), {}, Ending::Cut});
    EXPECT_EQ(load("/a.png"), ImageResult(URLError::ConnectionFailed));
    restart();
    setImage("/a.png", kBlue);
    EXPECT_EQ(colourOf(load("/a.png")), kBlue); // nothing of it was kept
}

TEST_F(DefaultNetworkImageLoaderTest, DropsABodyThatGoesBeyondTheLimit)
{
    m_options.mostBytes = 1 << 20;
    m_server.setAnswer("/endless.png", {"200 OK", imageFile(kRed) + QByteArray(60'000, 'x'), {}, Ending::Endless});
    EXPECT_EQ(load("/endless.png"), ImageResult(URLError::CannotDecodeContentData));
    EXPECT_TRUE(eventually([this] { return m_server.openConnections() == 0; }));

    m_server.setAnswer("/endless.png", {"200 OK", imageFile(kRed)});
    EXPECT_EQ(colourOf(load("/endless.png")), kRed); // and it is asked for again
}

TEST_F(DefaultNetworkImageLoaderTest, DoesNotWaitForABodyThatIsAnnouncedToBeTooLarge)
{
    EXPECT_EQ(ImageSessionOptions().mostBytes, 64 * 1024 * 1024);
    m_server.setAnswer("/a.png", {"200 OK", "x", "Content-Length: 67108865\r\n", Ending::Stalled});
    EXPECT_EQ(load("/a.png"), ImageResult(URLError::CannotDecodeContentData));
}

TEST_F(DefaultNetworkImageLoaderTest, FollowsRedirectsAmongWebAddressesOnly)
{
    setImage("/a.png", kRed);
    const auto redirect = [this](const QByteArray &path, const QByteArray &target) {
        m_server.setAnswer(path, {"302 Found", "elsewhere", "Location: " + target + "\r\n"});
        return load(path);
    };
    EXPECT_EQ(colourOf(redirect("/relative", "/a.png")), kRed);
    EXPECT_EQ(colourOf(redirect("/absolute", m_server.url("/relative").toEncoded())), kRed);
    EXPECT_EQ(m_server.requestCount("/a.png"), 2);

    m_files.write(u"secret.png"_s, imageFile(kBlue));
    const QByteArray file = QUrl::fromLocalFile(m_files.url(u"secret.png"_s).path()).toEncoded();
    EXPECT_EQ(redirect("/file", file), ImageResult(URLError::UnsupportedURL));
    EXPECT_EQ(redirect("/ftp", "ftp://127.0.0.1/a.png"), ImageResult(URLError::UnsupportedURL));
    EXPECT_EQ(load("/file"), ImageResult(URLError::UnsupportedURL));
    EXPECT_EQ(m_server.requestCount("/file"), 1);

    EXPECT_EQ(redirect("/circle", "/circle"), ImageResult(URLError::ConnectionFailed));
}

TEST_F(DefaultNetworkImageLoaderTest, FetchesWebAddressesOnly)
{
    m_files.write(u"a.png"_s, imageFile(kRed));
    for (const QUrl &url :
         {QUrl::fromLocalFile(m_files.url(u"a.png"_s).path()), QUrl(u"ftp://127.0.0.1/a.png"_s),
          QUrl(u"data:image/png;base64,"_s + QString::fromLatin1(imageFile(kRed).toBase64())), QUrl(u"a.png"_s),
          QUrl(u"http:///a.png"_s), QUrl(), QUrl(u":/a.png"_s), QUrl(u"qrc:/a.png"_s)})
        EXPECT_EQ(load(url), ImageResult(URLError::UnsupportedURL)) << url.toString().toStdString();
}

TEST_F(DefaultNetworkImageLoaderTest, KeepsBytesOnTheDiskAndTakesThemHoweverOldTheyAre)
{
    setImage("/a.png", kRed, "Cache-Control: max-age=0, must-revalidate\r\nExpires: Thu, 01 Jan 1970 00:00:00 GMT\r\n");
    load("/a.png");
    restart();
    setImage("/a.png", kBlue);
    EXPECT_EQ(colourOf(load(m_server.url("/a.png#gh-dark-mode-only"))), kRed);
    EXPECT_EQ(m_server.requestCount("/a.png"), 1);
    EXPECT_EQ(QFile::permissions(m_options.cacheFolder.path()) & (QFile::ReadGroup | QFile::ReadOther), 0);
}

TEST_F(DefaultNetworkImageLoaderTest, KeepsBytesInMemoryWhereTheDiskTakesNone)
{
    m_options.diskCapacity = 0;
    m_files.write(u"images"_s, "a file where the folder would be");
    restart(1);
    setImage("/a.png", kRed);
    setImage("/b.png", kBlue);
    EXPECT_EQ(colourOf(load("/a.png")), kRed);
    EXPECT_EQ(colourOf(load("/b.png")), kBlue); // the decoded one before it has to go
    EXPECT_EQ(colourOf(load("/a.png")), kRed);
    EXPECT_EQ(m_server.requestCount("/a.png"), 1);
}

TEST_F(DefaultNetworkImageLoaderTest, KeepsNoBytesThatTheServerForbidsToKeep)
{
    setImage("/a.png", kRed, "Cache-Control: private, No-Store\r\n");
    load("/a.png");
    restart();
    load("/a.png");
    EXPECT_EQ(m_server.requestCount("/a.png"), 2);
}

TEST_F(DefaultNetworkImageLoaderTest, SendsNoCookies)
{
    setImage("/a.png", kRed, "Set-Cookie: who=you\r\n");
    setImage("/b.png", kRed);
    load("/a.png");
    load("/b.png");
    EXPECT_FALSE(m_server.lastRequest("/b.png").toLower().contains("cookie"));
}

TEST_F(DefaultNetworkImageLoaderTest, EndsWhatIsUnderWayWhenItGoes)
{
    m_server.setAnswer("/a.png", {"200 OK", imageFile(kRed), {}, Ending::Stalled});
    const QFuture<ImageResult> future = loader().image(m_server.url("/a.png"));
    ASSERT_TRUE(eventually([this] { return m_server.requestCount("/a.png") == 1; }));
    m_loader.reset();
    ASSERT_TRUE(future.isFinished());
    EXPECT_EQ(future.result(), ImageResult(URLError::Cancelled));
}

TEST_F(DefaultNetworkImageLoaderTest, CanGoAtAnyMoment)
{
    m_server.setAnswer("/large.png", {"200 OK", imageFile(kRed, {1500, 1500})});
    for (int round = 0; round < 12; ++round) {
        m_options.cacheFolder = m_files.url(u"images %1"_s.arg(round));
        restart();
        const int before = m_server.requestCount("/large.png");
        const QFuture<ImageResult> first = loader().image(m_server.url("/large.png"));
        const QFuture<ImageResult> second = loader().image(QUrl(u"http://127.0.0.1:1/"_s));
        // Before the request, before the answer, while it is decoded, behind it.
        if (round % 4 >= 1)
            eventually([&] { return m_server.requestCount("/large.png") > before; });
        if (round % 4 >= 2)
            eventually([&] { return first.isFinished(); }, std::chrono::milliseconds(round));
        m_loader.reset();
        EXPECT_TRUE(first.isFinished() && first.resultCount() == 1);
        EXPECT_TRUE(second.isFinished() && second.resultCount() == 1);
    }
}

TEST_F(DefaultNetworkImageLoaderTest, DoesNothingUntilItIsAsked)
{
    bool isMade = false;
    {
        DefaultNetworkImageLoader idle(
            [&isMade]() -> std::unique_ptr<ImageTransport> {
                isMade = true;
                return nullptr;
            },
            std::make_unique<DefaultNetworkImageCache>());
    }
    EXPECT_FALSE(isMade);
}

TEST_F(DefaultNetworkImageLoaderTest, IsMadeForTheWholeProcessWithAFolder)
{
    const ImageSessionOptions defaults;
    EXPECT_EQ(defaults.memoryCapacity, 10'485'760);
    EXPECT_EQ(defaults.diskCapacity, 104'857'600);
    EXPECT_EQ(defaults.timeout, 15s);

    setImage("/a.png", kRed);
    m_loader = makeSharedLoader(m_options.cacheFolder);
    EXPECT_EQ(colourOf(load("/a.png")), kRed);
    EXPECT_TRUE(QFile::exists(m_options.cacheFolder.path()));
}

TEST(DefaultNetworkImageCache, KeepsTheHundredThatWereUsedLast)
{
    DefaultNetworkImageCache cache;
    const auto url = [](int number) { return QUrl(u"http://a/%1"_s.arg(number)); };
    QImage image(1, 1, QImage::Format_RGB32);
    for (int i = 0; i < 100; ++i)
        cache.setImage(image, url(i));
    EXPECT_FALSE(cache.image(url(0)).isNull()); // used once more
    cache.setImage(image, url(100));
    EXPECT_FALSE(cache.image(url(0)).isNull());
    EXPECT_TRUE(cache.image(url(1)).isNull());
    EXPECT_FALSE(cache.image(url(2)).isNull());
}

TEST(DefaultNetworkImageCache, KeepsFewerLargeImages)
{
    DefaultNetworkImageCache cache(4, 4000);
    const auto url = [](int number) { return QUrl(u"http://a/%1"_s.arg(number)); };
    cache.setImage(QImage(20, 20, QImage::Format_RGB32), url(0)); // 1,600 bytes
    cache.setImage(QImage(20, 20, QImage::Format_RGB32), url(1));
    EXPECT_FALSE(cache.image(url(0)).isNull());
    cache.setImage(QImage(20, 20, QImage::Format_RGB32), url(2));
    EXPECT_TRUE(cache.image(url(1)).isNull());
    cache.setImage(QImage(40, 40, QImage::Format_RGB32), url(3)); // more than all may have
    EXPECT_TRUE(cache.image(url(3)).isNull());
}
