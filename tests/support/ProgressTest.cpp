#include "support/Progress.h"

#include "LumoException.h"
#include "TestOutput.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace ORBI_LUMO25D
{

namespace
{

/// Keeps what it is told; runs `action` at each report.
struct Listener : public MsgBase
{
    void update(MsgType, const char* s, double d) override
    {
        vNames.emplace_back(s);
        vFractions.push_back(d);
        if (action) action();
    }
    std::vector<std::string> vNames;
    std::vector<double> vFractions;
    std::function<void()> action;
};

using Fractions = std::vector<double>;

} // namespace

TEST(ProgressTest, StepsGiveAboutAHundredRisingReportsThatEndWithOne)
{
    const std::uint64_t huge = (std::uint64_t(1) << 32) + 500;
    const struct
    {
        std::uint64_t total;
        std::uint64_t unit;
        std::size_t numReports;
    } aCases[] = {
        {0, 1, 1}, // from finish() alone
        {1, 1, 1},
        {99, 1, 99},
        {100, 1, 100},
        {199, 1, 199},
        {200, 1, 100},
        {123457, 1, 101},        // 100 times 1234 units, and the rest in finish()
        {1000, 3, 34},           // 30, 60 ... 990 are multiples of the interval; and finish()
        {huge, huge / 100, 101}, // counted beyond 32 bits
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.total);
        Progress progress("P");
        Listener listener;
        progress.subscribe(MSG_PROGRESS, &listener);
        progress.start("work", c.total);
        for (std::uint64_t done = c.unit; done <= c.total; done += c.unit) progress.step(c.unit);
        progress.finish();
        ASSERT_EQ(listener.vFractions.size(), c.numReports);
        EXPECT_EQ(listener.vFractions.back(), 1.0);
        for (std::size_t i = 1; i < listener.vFractions.size(); ++i) {
            EXPECT_LT(listener.vFractions[i - 1], listener.vFractions[i]);
            EXPECT_EQ(listener.vNames[i], "work");
        }
        progress.step(1); // no step runs any more
        EXPECT_EQ(listener.vFractions.size(), c.numReports);
    }
}

TEST(ProgressTest, OvershootReportsOneOnceUntilTheNextStart)
{
    Progress progress("P");
    Listener listener;
    progress.subscribe(MSG_PROGRESS, &listener);
    progress.start("a", 4);
    progress.step(3);
    progress.addToTotal(2);
    progress.step(0);
    progress.step(7);
    progress.step(1);
    progress.finish();
    EXPECT_EQ(listener.vFractions, (Fractions{0.75, 0.5, 1.0}));
    progress.start("b", 2);
    progress.step(1);
    progress.finish();
    EXPECT_EQ(listener.vFractions, (Fractions{0.75, 0.5, 1.0, 0.5, 1.0}));
    EXPECT_EQ(listener.vNames.back(), "b");
}

TEST(ProgressTest, MutedOrUnheardPublishersCountNothing)
{
    Progress progress("P");
    Listener listener;
    progress.start("unheard", 2);
    progress.subscribe(MSG_PROGRESS, &listener);
    progress.step(1); // the step was never announced to anybody
    progress.suppress();
    progress.start("muted", 2);
    progress.step(1);
    progress.finish();
    EXPECT_TRUE(listener.vFractions.empty());
    progress.unsuppress();

    progress.start("heard", 2);
    progress.suppress(); // around a nested operation, which must not disturb the outer step
    progress.start("nested", 50);
    progress.step(17);
    progress.finish();
    progress.unsuppress();
    progress.step(1);
    EXPECT_EQ(listener.vNames, std::vector<std::string>{"heard"});
    EXPECT_EQ(listener.vFractions, Fractions{0.5});
}

TEST(ProgressTest, SubscriptionsAreSetsAndRejectNull)
{
    lumo_test::CoutCapture out;
    Progress progress("P");
    Listener a;
    Listener b;
    for (int i = 0; i < 2; ++i) progress.subscribe(MSG_PROGRESS, &a);
    progress.subscribe(static_cast<MsgType>(7), &b);
    progress.unsubscribe(MSG_PROGRESS, &b); // not there under this kind
    EXPECT_EQ(out.take(), "");
    progress.subscribe(MSG_PROGRESS, nullptr);
    EXPECT_NE(out.take().find("WARNING"), std::string::npos);
    progress.notify(MSG_PROGRESS, "n", 0.25);
    progress.notify(static_cast<MsgType>(7), "n", 0.5);
    EXPECT_EQ(a.vFractions, Fractions{0.25});
    EXPECT_EQ(b.vFractions, Fractions{0.5});
    progress.unsubscribe(MSG_PROGRESS, &a);
    progress.unsubscribe(MSG_PROGRESS, &a);
    progress.notify(MSG_PROGRESS, "n", 0.75);
    EXPECT_EQ(a.vFractions.size(), 1U);
}

TEST(ProgressTest, SubscribersMayLeaveAndDieAndThrowInsideUpdate)
{
    Progress progress("P");
    Listener first;
    auto pSecond = std::make_unique<Listener>();
    Listener third;
    for (Listener* p : {&first, pSecond.get(), &third}) progress.subscribe(MSG_PROGRESS, p);
    first.action = [&] {
        progress.unsubscribe(MSG_PROGRESS, &first);
        progress.unsubscribe(MSG_PROGRESS, pSecond.get());
        pSecond.reset();                    // a call to it would be seen by the address sanitizer
        progress.start("another step", 10); // the text handed on must stay the old one
    };
    progress.start("step", 4);
    progress.step(1);
    EXPECT_EQ(third.vNames, std::vector<std::string>{"step"});

    third.action = [] { throw LumoException(); };
    EXPECT_THROW(progress.step(1), LumoException);
    third.action = nullptr;
    progress.step(1);
    EXPECT_EQ(third.vFractions.back(), 0.2);
    EXPECT_EQ(first.vFractions.size(), 1U);
}

TEST(ProgressTest, ChildrenMoveTheirParentsAndLinksDieWithEitherSide)
{
    lumo_test::TempWorkDir dir;
    lumo_test::CoutCapture out;
    auto pParent = std::make_unique<Progress>("parent");
    auto pChild = std::make_unique<Progress>("child");
    Listener top;
    Listener low;
    pParent->subscribe(MSG_PROGRESS, &top);
    pChild->subscribe(MSG_PROGRESS, &low);
    pParent->addChild(pChild.get());
    pParent->addChild(pChild.get()); // counts once
    EXPECT_THROW(pChild->addChild(pParent.get()), LumoException);
    EXPECT_THROW(pChild->addChild(pChild.get()), LumoException);

    pParent->start("outer", 4);
    pParent->step(1);
    pChild->start("inner", 4);
    pChild->step(2);
    EXPECT_EQ(top.vFractions, (Fractions{0.25, 0.75})); // the sum of both, not their mean
    EXPECT_EQ(low.vFractions, Fractions{0.5});
    EXPECT_EQ(top.vNames.back(), "outer");

    pChild.reset();
    pParent->step(1);
    EXPECT_EQ(top.vFractions.back(), 0.5);
    Progress orphan("orphan");
    pParent->addChild(&orphan);
    pParent.reset();
    orphan.subscribe(MSG_PROGRESS, &low);
    orphan.start("alone", 2);
    orphan.step(1);
    EXPECT_EQ(low.vFractions.size(), 2U);
}

} // namespace ORBI_LUMO25D
