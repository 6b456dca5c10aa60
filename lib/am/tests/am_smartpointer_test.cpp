#include "am_smartpointer.h"

#include <memory>

#include <gtest/gtest.h>

typedef AM::TSmartPtr<std::shared_ptr<int>> Handle; // the shared pointer tells how many are alive

TEST(SmartPointer, copiesShareOneCountAndTheLastDestroys)
{
    const auto alive = std::make_shared<int>();
    Handle first = new std::shared_ptr<int>(alive);
    Handle second(first), third;
    third = second;
    Handle& self = third;
    third = self;
    third = second;
    third = third.getObject();
    EXPECT_EQ(3u, third.getRefCount());
    first.release();
    EXPECT_TRUE(first.isNull());
    second = new std::shared_ptr<int>(alive);
    EXPECT_EQ(1u, third.getRefCount());
    EXPECT_EQ(3, alive.use_count());
    third.attach(nullptr);
    EXPECT_EQ(2, alive.use_count());
    EXPECT_TRUE(third == nullptr);
    second = Handle();
    EXPECT_EQ(1, alive.use_count());
    EXPECT_EQ(0ul, static_cast<unsigned long>(first)); // the number of a null pointer
}
