#include "model/owned_list.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

int alive = 0;

struct Element {
    explicit Element(int number) : value(number) { ++alive; }
    Element(const Element& other) : value(other.value) { ++alive; }
    Element& operator=(const Element&) = delete;
    ~Element() { --alive; }

    std::unique_ptr<Element> Clone() const {
        return clonable ? std::make_unique<Element>(*this) : nullptr;
    }

    int value;
    bool clonable = true;
};

class OwnedListTest : public testing::Test {
protected:
    OwnedListTest() { alive = 0; }
    ~OwnedListTest() override {
        RemoveAllElements(array_, true);
        EXPECT_EQ(0, alive);
    }

    Element* AddNew(int value) { return AddOwned(array_, std::make_unique<Element>(value)); }

    PointerArray<Element> array_;
};

TEST_F(OwnedListTest, AddingAnElementKeepsItsIdentity) {
    Element element(1);
    EXPECT_TRUE(AddElement(array_, &element, false));
    EXPECT_EQ(&element, array_.At(0));
    RemoveAllElements(array_, false);
    EXPECT_EQ(1, alive);
}

TEST_F(OwnedListTest, AddingACloneLeavesTheElementTheCallers) {
    const auto element = std::make_unique<Element>(7);
    EXPECT_TRUE(AddElement(array_, element.get(), true));
    EXPECT_NE(element.get(), array_.At(0));
    EXPECT_EQ(7, array_.At(0)->value);
    EXPECT_EQ(2, alive);
}

TEST_F(OwnedListTest, AddingNullOrAnElementWithoutACloneAddsNothing) {
    Element element(1);
    element.clonable = false;
    EXPECT_FALSE(AddElement<Element>(array_, nullptr, false));
    EXPECT_FALSE(AddElement<Element>(array_, nullptr, true));
    EXPECT_FALSE(AddElement(array_, &element, true));
    EXPECT_EQ(nullptr, AddOwned(array_, std::unique_ptr<Element>()));
    EXPECT_EQ(0u, array_.Count());
}

TEST_F(OwnedListTest, CopyingAppendsClonesInOrderAndLeavesOutWhatCannotBeCloned) {
    PointerArray<Element> source;
    for (const int value : {1, 2, 3}) AddOwned(source, std::make_unique<Element>(value));
    source.At(1)->clonable = false;
    source.Add(nullptr);
    AddNew(0);
    CopyElements(array_, source);
    ASSERT_EQ(3u, array_.Count());
    EXPECT_EQ(1, array_.At(1)->value);
    EXPECT_EQ(3, array_.At(2)->value);
    EXPECT_NE(source.At(0), array_.At(1));
    RemoveAllElements(source, true);
    EXPECT_EQ(3, alive);
}

TEST_F(OwnedListTest, CopyingAListOntoItselfDoublesIt) {
    AddNew(1);
    AddNew(2);
    CopyElements(array_, array_);
    ASSERT_EQ(4u, array_.Count());
    EXPECT_EQ(1, array_.At(2)->value);
    EXPECT_EQ(2, array_.At(3)->value);
}

TEST_F(OwnedListTest, RemovingAllDeletesOnlyWhenAsked) {
    Element element(1);
    array_.Add(&element);
    RemoveAllElements(array_, false);
    EXPECT_EQ(0u, array_.Count());
    EXPECT_EQ(0u, array_.Capacity());
    EXPECT_EQ(1, alive);
    AddNew(2);
    array_.Add(nullptr);
    RemoveAllElements(array_, true);
    EXPECT_EQ(0u, array_.Capacity());
    EXPECT_EQ(1, alive);
}

TEST_F(OwnedListTest, RemovingAnElementDeletesItAndKeepsTheOrder) {
    AddNew(1);
    Element* const second = AddNew(2);
    AddNew(3);
    RemoveElement(array_, second);
    ASSERT_EQ(2u, array_.Count());
    EXPECT_EQ(1, array_.At(0)->value);
    EXPECT_EQ(3, array_.At(1)->value);
    EXPECT_EQ(2, alive);
}

TEST_F(OwnedListTest, RemovingAnElementThatIsNotInTheListStillDeletesIt) {
    AddNew(1);
    RemoveElement(array_, std::make_unique<Element>(2).release());
    EXPECT_EQ(1u, array_.Count());
    EXPECT_EQ(1, alive);
}

TEST_F(OwnedListTest, RemovingNullDoesNothing) {
    AddNew(1);
    RemoveElement<Element>(array_, nullptr);
    EXPECT_EQ(1u, array_.Count());
}

}  // namespace
}  // namespace depot
