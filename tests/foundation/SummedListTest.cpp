#include "foundation/SummedList.h"

#include <gtest/gtest.h>

#include <random>

namespace Tessaline {

namespace {

struct Weight {
    int value = 0;
    int sum() const { return value; }
    friend bool operator==(const Weight &, const Weight &) = default;
};

using List = SummedList<Weight, int>;

std::vector<Weight> contents(const List &list)
{
    std::vector<Weight> entries;
    if (list.isEmpty())
        return entries;
    List::Place place = list.first();
    int before = 0;
    do {
        EXPECT_EQ(place.before, before);
        entries.push_back(list.at(place));
        before += list.at(place).value;
    } while (list.advance(place));
    return entries;
}

List::Place placeAtIndex(const List &list, int index)
{
    List::Place place = list.first();
    for (int i = 0; i < index; ++i)
        EXPECT_TRUE(list.advance(place));
    return place;
}

} // namespace

TEST(SummedList, EqualsAPlainListAfterAnySequenceOfReplacements)
{
    std::mt19937 random(7);
    const auto upTo = [&random](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    for (int round = 0; round < 20; ++round) {
        List list;
        std::vector<Weight> model(static_cast<std::size_t>(upTo(3000)));
        for (Weight &weight : model)
            weight.value = upTo(9);
        list.reset(model);
        for (int edit = 0; edit < 60; ++edit) {
            const int at = model.empty() ? 0 : upTo(static_cast<int>(model.size()) - 1);
            const int count = std::min(upTo(edit % 9 == 0 ? 2000 : 4), static_cast<int>(model.size()) - at);
            std::vector<Weight> fresh(static_cast<std::size_t>(upTo(edit % 7 == 0 ? 2000 : 4)));
            for (Weight &weight : fresh)
                weight.value = upTo(9);
            const bool appends = !model.empty() && count == 0 && edit % 3 == 0;
            const List::Place place = model.empty() ? list.first() : appends ? list.end() : placeAtIndex(list, at);
            list.replace(place, static_cast<std::size_t>(count), fresh);
            model.erase(model.begin() + at, model.begin() + at + count);
            model.insert(appends ? model.end() : model.begin() + at, fresh.begin(), fresh.end());

            ASSERT_EQ(contents(list), model);
            ASSERT_EQ(list.count(), static_cast<qsizetype>(model.size()));
            int total = 0;
            for (const Weight &weight : model)
                total += weight.value;
            ASSERT_EQ(list.total(), total);
        }
    }
}

TEST(SummedList, FindsTheEntryThatCoversASum)
{
    List list;
    std::vector<Weight> entries;
    for (int i = 0; i < 2000; ++i)
        entries.push_back({i % 3}); // zeros too
    list.reset(entries);

    int before = 0;
    for (int i = 0; i < 2000; ++i) {
        for (int inside = before; inside < before + entries[static_cast<std::size_t>(i)].value; ++inside) {
            const List::Place place = list.find([inside](int behind) { return behind > inside; });
            ASSERT_EQ(place.before, before);
            ASSERT_EQ(list.at(place).value, entries[static_cast<std::size_t>(i)].value);
        }
        before += entries[static_cast<std::size_t>(i)].value;
    }
    EXPECT_EQ(list.find([](int) { return false; }).before, list.last().before);
}

TEST(SummedList, StepsBothWaysOverPages)
{
    List list;
    list.reset(std::vector<Weight>(1500, {2}));

    List::Place place = list.last();
    int steps = 0;
    while (list.retreat(place))
        ++steps;

    EXPECT_EQ(steps, 1499);
    EXPECT_EQ(place.before, 0);
    EXPECT_FALSE(list.retreat(place));
}

TEST(SummedList, TransformKeepsTheSums)
{
    List list;
    list.reset(std::vector<Weight>(1500, {2}));

    list.transform([](Weight &weight) { weight.value = 3; });

    EXPECT_EQ(list.total(), 4500);
    EXPECT_EQ(list.find([](int behind) { return behind > 3000; }).before, 3000);
}

} // namespace Tessaline
