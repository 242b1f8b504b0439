// The holder of a process-wide object.
#include "Singleton.h"

#include <gtest/gtest.h>

namespace {

struct Counted {
    Counted() { ++made; }
    ~Counted() { ++destroyed; }

    static inline int made = 0;
    static inline int destroyed = 0;
};

struct Other {};

}  // namespace

TEST(Singleton, IsMadeOnFirstUseOnceAndNotDestroyed)
{
    using Holder = Util::Singleton<Counted>;
    EXPECT_EQ(Holder::mInstance, nullptr);
    EXPECT_EQ(Counted::made, 0);

    Counted* const first = Holder::getInstance();
    EXPECT_EQ(Holder::getInstance(), first);
    EXPECT_EQ(Holder::mInstance, first);
    EXPECT_EQ(Counted::made, 1);

    delete first;
    EXPECT_EQ(Holder::mInstance, first);
    EXPECT_EQ(Counted::destroyed, 1);
    Holder::mInstance = nullptr;
}

TEST(Singleton, EachTypeHasItsOwn)
{
    Other* const other = Util::Singleton<Other>::getInstance();

    EXPECT_EQ(Util::Singleton<Counted>::mInstance, nullptr);
    delete other;
    Util::Singleton<Other>::mInstance = nullptr;
}
