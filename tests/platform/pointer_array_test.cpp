#include "platform/pointer_array.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <vector>

#include "support/random_text.h"

namespace depot {
namespace {

// What collections get that do not say how far they may grow.
static_assert(std::is_same_v<PointerArray<int>, PointerArray<int, 0x0FFFFFFF>>);

int numbers[64];

template <class Array>
std::vector<int*> Elements(const Array& array) {
    return std::vector<int*>(array.begin(), array.end());
}

TEST(PointerArrayTest, NewArrayIsEmptyAndTakesNoRoom) {
    const PointerArray<int> array;
    EXPECT_EQ(0u, array.Count());
    EXPECT_EQ(0u, array.Capacity());
    EXPECT_EQ(array.begin(), array.end());
}

TEST(PointerArrayTest, CapacityDoublesFromOne) {
    PointerArray<int> array;
    const std::size_t capacities[] = {1, 2, 4, 4, 8, 8, 8, 8, 16};
    for (std::size_t index = 0; index < std::size(capacities); ++index) {
        SCOPED_TRACE(index);
        EXPECT_TRUE(array.Add(&numbers[index]));
        EXPECT_EQ(index + 1, array.Count());
        EXPECT_EQ(capacities[index], array.Capacity());
        EXPECT_EQ(&numbers[index], array.At(index));
    }
    EXPECT_EQ(&numbers[0], array.At(0));
}

TEST(PointerArrayTest, GrowthBeyondTheLimitDropsTheNewElement) {
    PointerArray<int, 4> exact;
    PointerArray<int, 7> between;
    for (int index = 0; index < 4; ++index) {
        EXPECT_TRUE(exact.Add(&numbers[index]));
        EXPECT_TRUE(between.Add(&numbers[index]));
    }
    EXPECT_FALSE(exact.Add(&numbers[4]));
    EXPECT_FALSE(between.Add(&numbers[4]));
    const std::vector<int*> first = {&numbers[0], &numbers[1], &numbers[2], &numbers[3]};
    EXPECT_EQ(first, Elements(exact));
    EXPECT_EQ(first, Elements(between));
    EXPECT_EQ(4u, between.Capacity());
}

TEST(PointerArrayTest, FullArrayTakesAnElementAgainAfterARemoval) {
    PointerArray<int, 2> array;
    EXPECT_TRUE(array.Add(&numbers[0]));
    EXPECT_TRUE(array.Add(&numbers[1]));
    EXPECT_FALSE(array.Add(&numbers[2]));
    EXPECT_TRUE(array.Remove(&numbers[0]));
    EXPECT_TRUE(array.Add(&numbers[2]));
    EXPECT_EQ((std::vector<int*>{&numbers[1], &numbers[2]}), Elements(array));
}

TEST(PointerArrayTest, AddingOneOfItsOwnSlotsThrowsEFail) {
    PointerArray<int> array;
    array.Add(&numbers[0]);
    array.Add(&numbers[1]);
    EXPECT_THROW(array.Add(*array.begin()), SelfReferencingAdd);
    EXPECT_THROW(array.Add(*(array.end() - 1)), SelfReferencingAdd);
    EXPECT_EQ(0x80004005u, SelfReferencingAdd::kCode);
    EXPECT_EQ((std::vector<int*>{&numbers[0], &numbers[1]}), Elements(array));
}

TEST(PointerArrayTest, CopyOfAnElementMayBeAdded) {
    PointerArray<int> array;
    array.Add(&numbers[0]);
    EXPECT_TRUE(array.Add(array.At(0)));
    EXPECT_EQ((std::vector<int*>{&numbers[0], &numbers[0]}), Elements(array));
}

TEST(PointerArrayTest, NullPointerIsAnElement) {
    PointerArray<int> array;
    EXPECT_TRUE(array.Add(nullptr));
    EXPECT_TRUE(array.Add(&numbers[0]));
    EXPECT_EQ((std::vector<int*>{nullptr, &numbers[0]}), Elements(array));
    EXPECT_TRUE(array.Remove(nullptr));
    EXPECT_EQ((std::vector<int*>{&numbers[0]}), Elements(array));
}

TEST(PointerArrayTest, RemoveClosesTheGapInOrder) {
    PointerArray<int> array;
    for (int index = 0; index < 4; ++index) array.Add(&numbers[index]);
    EXPECT_TRUE(array.Remove(&numbers[1]));
    EXPECT_EQ((std::vector<int*>{&numbers[0], &numbers[2], &numbers[3]}), Elements(array));
    EXPECT_TRUE(array.Remove(&numbers[3]));
    EXPECT_TRUE(array.Remove(&numbers[0]));
    EXPECT_EQ((std::vector<int*>{&numbers[2]}), Elements(array));
}

TEST(PointerArrayTest, RemoveTakesOnlyTheFirstOfEquals) {
    PointerArray<int> array;
    for (int index : {0, 1, 0}) array.Add(&numbers[index]);
    EXPECT_TRUE(array.Remove(&numbers[0]));
    EXPECT_EQ((std::vector<int*>{&numbers[1], &numbers[0]}), Elements(array));
}

TEST(PointerArrayTest, RemoveOfAForeignPointerChangesNothing) {
    PointerArray<int> array;
    EXPECT_FALSE(array.Remove(&numbers[0]));
    array.Add(&numbers[0]);
    EXPECT_FALSE(array.Remove(&numbers[1]));
    EXPECT_EQ(1u, array.Count());
}

TEST(PointerArrayTest, ClearFreesTheRoomAndTheArrayGrowsFromOneAgain) {
    PointerArray<int> array;
    for (int& number : numbers) array.Add(&number);
    array.Clear();
    EXPECT_EQ(0u, array.Count());
    EXPECT_EQ(0u, array.Capacity());
    array.Add(&numbers[0]);
    EXPECT_EQ(1u, array.Capacity());
}

TEST(PointerArrayTest, SwapExchangesEverything) {
    PointerArray<int> left;
    PointerArray<int> right;
    for (int index = 0; index < 3; ++index) left.Add(&numbers[index]);
    left.Swap(right);
    EXPECT_EQ(0u, left.Count());
    EXPECT_EQ(0u, left.Capacity());
    EXPECT_EQ(3u, right.Count());
    EXPECT_EQ(4u, right.Capacity());
}

TEST(PointerArrayTest, RandomOperationsGiveWhatAVectorGives) {
    test::RandomTexts random(0x5EED05);
    PointerArray<int> array;
    std::vector<int*> model;
    for (int round = 0; round < 5000; ++round) {
        int* const element = &numbers[random.Below(std::size(numbers))];
        if (random.Below(500) == 0) {
            array.Clear();
            model.clear();
        } else if (random.Below(3) > 0) {
            array.Add(element);
            model.push_back(element);
        } else {
            const auto found = std::find(model.begin(), model.end(), element);
            ASSERT_EQ(found != model.end(), array.Remove(element));
            if (found != model.end()) model.erase(found);
        }
        ASSERT_EQ(model, Elements(array));
    }
}

}  // namespace
}  // namespace depot
