#include "NetworkImage/NetworkImageModel.h"

#include "NetworkImage/NetworkImageLoader.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <QtCore/QPromise>
#include <QtTest/QSignalSpy>

#include <memory>

using namespace NetworkImage;
using namespace Qt::StringLiterals;
using Tessaline::eventually;

namespace {

/// Answers when the test says.
class HeldLoader final : public NetworkImageLoader
{
public:
    QFuture<ImageResult> image(const QUrl &url) override
    {
        urls.append(url);
        m_promises.push_back(std::make_unique<QPromise<ImageResult>>());
        m_promises.back()->start();
        return m_promises.back()->future();
    }
    void answer(size_t request, const ImageResult &result)
    {
        m_promises[request]->addResult(result);
        m_promises[request]->finish();
    }
    void end(size_t request) { m_promises[request].reset(); }

    QList<QUrl> urls; // of the requests

private:
    std::vector<std::unique_ptr<QPromise<ImageResult>>> m_promises;
};

class NetworkImageModelTest : public testing::Test
{
protected:
    bool becomes(size_t state)
    {
        return eventually([this, state] { return m_model->image().index() == state; });
    }

    static constexpr size_t kEmpty = 0, kSuccess = 1, kFailure = 2;
    const ImageSource m_first{QUrl(u"http://a/1.png"_s)};
    const ImageSource m_second{QUrl(u"http://a/2.png"_s), 2};
    HeldLoader m_loader;
    std::unique_ptr<NetworkImageModel> m_model = std::make_unique<NetworkImageModel>(m_loader);
};

QImage image(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::red);
    return image;
}

} // namespace

TEST_F(NetworkImageModelTest, IsEmptyUntilTheImageHasCome)
{
    EXPECT_EQ(m_model->image(), NetworkImageState(Empty()));
    m_model->setSource(m_first);
    EXPECT_EQ(m_model->source(), m_first);
    EXPECT_EQ(m_model->image(), NetworkImageState(Empty()));

    m_loader.answer(0, image(4, 2));

    ASSERT_TRUE(becomes(kSuccess));
    EXPECT_EQ(std::get<Success>(m_model->image()).idealSize, QSizeF(4, 2));
    EXPECT_EQ(m_loader.urls, QList<QUrl>{m_first.url});
}

TEST_F(NetworkImageModelTest, DividesThePixelsByTheScale)
{
    m_model->setSource(m_second);
    m_loader.answer(0, image(5, 2));
    ASSERT_TRUE(becomes(kSuccess));
    EXPECT_EQ(std::get<Success>(m_model->image()).idealSize, QSizeF(2.5, 1));
    EXPECT_EQ(std::get<Success>(m_model->image()).image.devicePixelRatio(), 2);

    m_model->setSource(ImageSource{m_first.url, 0});
    m_loader.answer(1, image(5, 2));
    ASSERT_TRUE(becomes(kSuccess));
    EXPECT_EQ(std::get<Success>(m_model->image()).idealSize, QSizeF(5, 2));
}

TEST_F(NetworkImageModelTest, FailsAsTheLoaderDoes)
{
    m_model->setSource(m_first);
    m_loader.answer(0, URLError::BadServerResponse);
    EXPECT_TRUE(becomes(kFailure));

    m_model->setSource(m_second);
    EXPECT_EQ(m_model->image(), NetworkImageState(Empty()));
    m_loader.end(1); // without any result
    EXPECT_TRUE(becomes(kFailure));
}

TEST_F(NetworkImageModelTest, DoesNothingForTheSourceThatItHas)
{
    m_model->setSource(m_first);
    m_model->setSource(m_first);
    m_loader.answer(0, URLError::TimedOut);
    ASSERT_TRUE(becomes(kFailure));
    m_model->setSource(m_first);
    EXPECT_EQ(m_model->image(), NetworkImageState(Failure()));
    EXPECT_EQ(m_loader.urls.size(), 1);

    m_model->setSource(ImageSource{m_first.url, 3}); // another source: the scale differs
    EXPECT_EQ(m_loader.urls.size(), 2);
}

TEST_F(NetworkImageModelTest, DropsWhatComesForAnOlderSource)
{
    m_model->setSource(m_first);
    m_model->setSource(m_second);
    QSignalSpy changed(m_model.get(), &NetworkImageModel::imageChanged);

    m_loader.answer(0, image(1, 1));
    m_loader.answer(1, image(8, 8));

    ASSERT_TRUE(becomes(kSuccess));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(std::get<Success>(m_model->image()).idealSize, QSizeF(4, 4));
}

TEST_F(NetworkImageModelTest, StaysEmptyWithoutASource)
{
    m_model->setSource(m_first);
    m_model->setSource(std::nullopt);
    m_loader.answer(0, image(1, 1));
    QCoreApplication::processEvents();
    EXPECT_EQ(m_model->image(), NetworkImageState(Empty()));
    EXPECT_EQ(m_loader.urls.size(), 1);
}

TEST_F(NetworkImageModelTest, StopsWaitingAndAsksAgainWhenItsViewComesBack)
{
    m_model->setSource(m_first);
    m_model->cancel();
    m_loader.answer(0, image(1, 1));
    QCoreApplication::processEvents();
    EXPECT_EQ(m_model->image(), NetworkImageState(Empty()));

    m_model->setSource(m_first);
    m_loader.answer(1, image(2, 2));
    ASSERT_TRUE(becomes(kSuccess));

    m_model->cancel(); // what has come stays
    m_model->setSource(m_first);
    EXPECT_EQ(m_model->image().index(), kSuccess);
    EXPECT_EQ(m_loader.urls.size(), 2);
}

TEST_F(NetworkImageModelTest, TakesANewSourceFromThoseWhoHearOfTheOld)
{
    QObject::connect(m_model.get(), &NetworkImageModel::imageChanged, m_model.get(),
                     [this] { m_model->setSource(m_second); });
    m_model->setSource(m_first);
    m_loader.answer(0, image(1, 1));
    ASSERT_TRUE(eventually([this] { return m_loader.urls.size() == 2; }));
    m_loader.answer(1, image(6, 6));
    ASSERT_TRUE(becomes(kSuccess));
    EXPECT_EQ(std::get<Success>(m_model->image()).idealSize, QSizeF(3, 3));
}

TEST_F(NetworkImageModelTest, CanGoWhileItWaits)
{
    m_model->setSource(m_first);
    m_loader.answer(0, image(1, 1));
    m_model.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(m_loader.urls.size(), 1);
}
