#include "foundation/EventCenter.h"

#include "foundation/AppEvents.h"
#include "foundation/FileURL.h"
#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

TEST(EventCenter, DeliversAtOnceAndInTheOrderOfRegistration)
{
    EventCenter events;
    QObject context;
    QStringList heard;
    events.observe(AppEvents::kZoomInFont, &context, [&](const QVariantMap &) { heard.append(u"first"_s); });
    events.observe(AppEvents::kZoomInFont, &context, [&](const QVariantMap &) { heard.append(u"second"_s); });

    events.post(AppEvents::kZoomInFont);

    EXPECT_EQ(heard, (QStringList{u"first"_s, u"second"_s}));
}

TEST(EventCenter, DeliversByNameOnly)
{
    EventCenter events;
    QObject context;
    int heard = 0;
    events.observe(AppEvents::kZoomInFont, &context, [&](const QVariantMap &) { ++heard; });

    events.post(AppEvents::kZoomOutFont);
    EXPECT_EQ(heard, 0);

    events.post("ZoomInFont"_L1);
    EXPECT_EQ(heard, 1);
}

TEST(EventCenter, CarriesADictionaryThatMayBeEmpty)
{
    EventCenter events;
    QObject context;
    QList<QVariantMap> heard;
    events.observe(AppEvents::kFileDidUpdateExternally, &context,
                   [&](const QVariantMap &userInfo) { heard.append(userInfo); });

    events.post(AppEvents::kFileDidUpdateExternally);
    events.post(AppEvents::kFileDidUpdateExternally, {{AppEvents::kUrl, QVariant::fromValue(FileURL(u"/a.md"_s))}});

    ASSERT_EQ(heard.size(), 2);
    EXPECT_TRUE(heard.at(0).isEmpty());
    EXPECT_EQ(heard.at(1).value(u"url"_s).value<FileURL>(), FileURL(u"/a.md"_s));
}

TEST(EventCenter, AnEventThatNobodyObservesIsLostWithoutAnError)
{
    EventCenter events;
    events.post(AppEvents::kZoomInFont);

    QObject context;
    int heard = 0;
    events.observe(AppEvents::kZoomInFont, &context, [&](const QVariantMap &) { ++heard; });

    EXPECT_EQ(heard, 0);
}

TEST(EventCenter, AnObserverThatHasGoneHearsNothing)
{
    EventCenter events;
    int heard = 0;
    auto context = std::make_unique<QObject>();
    events.observe(AppEvents::kZoomInFont, context.get(), [&](const QVariantMap &) { ++heard; });

    context.reset();
    events.post(AppEvents::kZoomInFont);

    EXPECT_EQ(heard, 0);
}

TEST(EventCenter, AnObserverMayGoAwayOrPostWhileItIsCalled)
{
    EventCenter events;
    QStringList heard;
    auto context = std::make_unique<QObject>();
    QObject other;
    events.observe(AppEvents::kZoomInFont, context.get(), [&](const QVariantMap &) {
        heard.append(u"leaves"_s);
        context.reset();
    });
    events.observe(AppEvents::kZoomInFont, &other, [&](const QVariantMap &) {
        heard.append(u"in"_s);
        events.post(AppEvents::kZoomOutFont);
    });
    events.observe(AppEvents::kZoomOutFont, &other, [&](const QVariantMap &) { heard.append(u"out"_s); });

    events.post(AppEvents::kZoomInFont);
    events.post(AppEvents::kZoomInFont);

    EXPECT_EQ(heard, (QStringList{u"leaves"_s, u"in"_s, u"out"_s, u"in"_s, u"out"_s}));
}

} // namespace Tessaline
