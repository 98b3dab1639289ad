#include "foundation/Result.h"

#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <memory>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

TEST(Result, HoldsAValue)
{
    const Result<QString> result(u"text"_s);

    EXPECT_TRUE(result);
    EXPECT_EQ(result.value(), u"text"_s);
}

TEST(Result, HoldsAFailure)
{
    const Failure failure{FailureKind::NoSpace, u"There is no space left on the disk."_s};

    const Result<QString> result(failure);

    EXPECT_FALSE(result);
    EXPECT_EQ(result.failure(), failure);
}

TEST(Result, AnEmptyTextIsAValue)
{
    EXPECT_TRUE(Result<QString>(QString()));
}

TEST(Result, GivesAwayAValueThatCannotBeCopied)
{
    Result<std::unique_ptr<int>> result(std::make_unique<int>(7));

    const std::unique_ptr<int> taken = std::move(result).value();

    EXPECT_EQ(*taken, 7);
}

TEST(Result, OfNothingSucceedsUnlessItIsGivenAFailure)
{
    EXPECT_TRUE(Result<void>());
    EXPECT_FALSE(Result<void>(Failure{FailureKind::NotFound, QString()}));
}

} // namespace Tessaline
