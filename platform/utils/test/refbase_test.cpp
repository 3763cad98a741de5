#include "refbase.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace Tarvo {
namespace {

class Tracked : public virtual RefBase {
public:
    explicit Tracked(int* destroyed) : destroyed_(destroyed) {}
    ~Tracked() override { ++*destroyed_; }
    sptr<Tracked> Self() { return sptr<Tracked>(this); }

private:
    int* destroyed_;
};

class Derived : public Tracked {
public:
    using Tracked::Tracked;
};

TEST(RefBaseTest, LastStrongReferenceDeletesAndWeakReferencesStopPromoting)
{
    int destroyed = 0;
    wptr<Tracked> weak;
    {
        sptr<Tracked> strong = sptr<Tracked>::MakeSptr(&destroyed);
        weak = strong;
        EXPECT_EQ(strong->GetSptrRefCount(), 1);
        EXPECT_EQ(strong->GetWptrRefCount(), 1);
        sptr<Tracked> promoted = weak.promote();
        ASSERT_NE(promoted, nullptr);
        EXPECT_EQ(promoted->GetSptrRefCount(), 2);
    }
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(weak.promote(), nullptr);  // the counter outlives the object
}

TEST(RefBaseTest, SptrFromThisInsideAMemberSharesTheCount)
{
    int destroyed = 0;
    sptr<Tracked> owner = new Tracked(&destroyed);
    {
        sptr<Tracked> self = owner->Self();
        EXPECT_EQ(owner->GetSptrRefCount(), 2);
    }
    EXPECT_EQ(destroyed, 0);
    owner = nullptr;
    EXPECT_EQ(destroyed, 1);
}

TEST(RefBaseTest, ConversionsMovesAndComparisons)
{
    int destroyed = 0;
    sptr<Derived> derived = new Derived(&destroyed);
    sptr<Tracked> base = derived;
    EXPECT_TRUE(base == derived);
    wptr<Tracked> weak(derived);
    sptr<Tracked> moved = std::move(base);
    EXPECT_EQ(base, nullptr);
    EXPECT_EQ(moved->GetSptrRefCount(), 2);
    moved.clear();
    derived = nullptr;
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(weak.promote(), nullptr);
}

TEST(RefBaseTest, NeverStronglyHeldObjectIsOwnedByItsCreator)
{
    int destroyed = 0;
    {
        Tracked onStack(&destroyed);
        wptr<Tracked> weak(&onStack);
        EXPECT_EQ(weak.promote(), nullptr);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(RefBaseTest, PromoteRacingWithTheLastReleaseNeverResurrects)
{
    for (int round = 0; round < 200; ++round) {
        int destroyed = 0;
        sptr<Tracked> strong = new Tracked(&destroyed);
        wptr<Tracked> weak = strong;
        std::atomic<bool> go{false};
        std::thread releaser([&] {
            while (!go) {
            }
            strong = nullptr;
        });
        go = true;
        sptr<Tracked> promoted = weak.promote();
        releaser.join();
        EXPECT_EQ(destroyed, promoted == nullptr ? 1 : 0);
        promoted = nullptr;
        EXPECT_EQ(destroyed, 1);
    }
}

}  // namespace
}  // namespace Tarvo
