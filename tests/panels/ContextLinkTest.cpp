#include "panels/ContextLink.h"

#include <gtest/gtest.h>

using namespace Tessaline;

namespace {

constexpr ContextLink kForTheSystem{};

ContextLink handled(const std::optional<QString> &topic)
{
    return {.isHandled = true, .topic = topic};
}

} // namespace

TEST(ContextLink, TheTopicIsReadAndDecoded)
{
    EXPECT_EQ(contextLink(u"tessaline://add-context?concept=Hamlet"), handled(u"Hamlet"_qs));
    EXPECT_EQ(contextLink(u"tessaline://add-context/?a=b&concept=Caf%C3%A9%20noir+1#x"),
              handled(u"Caf\u00E9 noir+1"_qs));
    EXPECT_EQ(contextLink(u"tessaline://add-context?concept=Größe"), handled(u"Größe"_qs));
}

TEST(ContextLink, TheFirstTopicWithAValueCounts)
{
    EXPECT_EQ(contextLink(u"tessaline://add-context?concept&concept=b&concept=c"), handled(u"b"_qs));
    EXPECT_EQ(contextLink(u"tessaline://add-context?concept=&concept=c"), handled(u""_qs));
}

TEST(ContextLink, WithoutATopicItIsHandledAllTheSame)
{
    EXPECT_EQ(contextLink(u"tessaline://add-context"), handled(std::nullopt));
    EXPECT_EQ(contextLink(u"tessaline://add-context?concept"), handled(std::nullopt));
    EXPECT_EQ(contextLink(u"tessaline://add-context?Concept=a"), handled(std::nullopt));
    EXPECT_EQ(contextLink(u"tessaline://add-context#?concept=a"), handled(std::nullopt));
}

TEST(ContextLink, OtherSchemesAndHostsAreForTheSystem)
{
    for (const QStringView url :
         {u"https://add-context?concept=a", u"tessaline://add-contexts?concept=a", u"TESSALINE://add-context?concept=a",
          u"tessaline://Add-Context?concept=a", u"tessaline:add-context?concept=a",
          u"tessaline:///add-context?concept=a", u"tessaline", u"", u"mailto:a@add-context"})
        EXPECT_EQ(contextLink(url), kForTheSystem) << url.toString().toStdString();
}
