#include "am_smartpointer.h"

#include <gtest/gtest.h>

namespace
{
struct Probe
{
    explicit Probe(int& deaths) : mDeaths(deaths) {}
    ~Probe() { ++mDeaths; }
    int& mDeaths;
};

typedef AM::TSmartPtr<Probe> ProbePtr;
} // namespace

TEST(SmartPointer, copiesShareOneCountAndTheLastDestroys)
{
    int deaths = 0;
    ProbePtr first = new Probe(deaths);
    ProbePtr second(first), third;
    third = second;
    EXPECT_EQ(3u, first.getRefCount());
    ProbePtr& self = third;
    third = self;
    third = second;
    third = third.getObject();
    EXPECT_EQ(3u, third.getRefCount());
    first.release();
    EXPECT_TRUE(first.isNull());
    second = new Probe(deaths);
    EXPECT_EQ(1u, third.getRefCount());
    EXPECT_EQ(0, deaths);
    third.attach(nullptr);
    EXPECT_EQ(1, deaths);
    EXPECT_TRUE(third == nullptr);
    second = ProbePtr();
    EXPECT_EQ(2, deaths);
    EXPECT_EQ(0ul, static_cast<unsigned long>(first)); // the number of a null pointer
}
