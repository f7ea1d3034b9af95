#include "support/Progress.h"

#include "LumoException.h"
#include "TestOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>

namespace ORBI_LUMO25D
{

namespace
{

using Fractions = std::vector<double>;

/// Keeps what it is told; runs `action` at each report.
struct Listener : public MsgBase
{
    void update(MsgType, const char* s, double d) override
    {
        vNames.emplace_back(s);
        vFractions.push_back(d);
        if (action) action();
    }
    Fractions vFractions;
    std::vector<std::string> vNames;
    std::function<void()> action;
};

} // namespace

TEST(ProgressTest, StepsGiveAboutAHundredRisingReportsThatEndWithOne)
{
    const std::uint64_t huge = 4294967796;
    // Total, unit, number of reports. For 123457 these are 100 times 1234 units and the rest in finish(); 30, 60 ... 990
    // are multiples of the interval of 1000 and of the unit; the last one is counted beyond 32 bits.
    const std::array<std::uint64_t, 3> aCases[] = {
        {0, 1, 1}, {1, 1, 1}, {199, 1, 199}, {200, 1, 100}, {123457, 1, 101}, {1000, 3, 34}, {huge, huge / 100, 101}};
    for (const auto& [total, unit, numReports] : aCases) {
        SCOPED_TRACE(total);
        Progress progress("P");
        Listener listener;
        progress.subscribe(MSG_PROGRESS, &listener);
        progress.start("work", total);
        for (std::uint64_t done = unit; done <= total; done += unit) progress.step(unit);
        progress.finish();
        progress.step(1); // no step runs any more
        ASSERT_EQ(listener.vFractions.size(), numReports);
        EXPECT_EQ(listener.vFractions.back(), 1.0);
        const Fractions& v = listener.vFractions;
        EXPECT_EQ(std::adjacent_find(v.begin(), v.end(), std::greater_equal<>()), v.end());
    }
}

TEST(ProgressTest, MovingTotalsAndMutedStepsKeepTheFractionsRight)
{
    Progress progress("P");
    Listener listener;
    progress.start("unheard", 2);
    progress.subscribe(MSG_PROGRESS, &listener);
    progress.step(1); // the step was never announced to anybody
    progress.start("a", 4);
    progress.step(3);
    progress.addToTotal(2);
    progress.step(0);
    progress.suppress(); // around a nested operation, which must not disturb the outer step
    progress.start("nested", 50);
    progress.step(17);
    progress.addToTotal(8);
    progress.finish();
    progress.unsuppress();
    progress.step(7); // overshoots: reported as 1, once until the next start
    progress.step(1);
    progress.finish();
    progress.start("b", 2);
    progress.step(1);
    EXPECT_EQ(listener.vFractions, (Fractions{0.75, 0.5, 1.0, 0.5}));
    EXPECT_EQ(listener.vNames, (std::vector<std::string>{"a", "a", "a", "b"}));
}

TEST(ProgressTest, SubscribersMayBeNullComeTwiceLeaveDieAndThrowInsideUpdate)
{
    lumo_test::CoutCapture out;
    Progress progress("P");
    Listener first, third;
    auto pSecond = std::make_unique<Listener>();
    for (Listener* p : {&first, pSecond.get(), &third, &third}) progress.subscribe(MSG_PROGRESS, p);
    progress.subscribe(MSG_PROGRESS, nullptr);
    EXPECT_NE(out.take().find("WARNING"), std::string::npos);
    first.action = [&] {
        for (Listener* p : {&first, pSecond.get()}) progress.unsubscribe(MSG_PROGRESS, p);
        pSecond.reset();                    // a call to it would be seen by the address sanitizer
        progress.start("another step", 10); // the text handed on must stay the old one
    };
    progress.start("step", 4);
    progress.step(1);
    EXPECT_EQ(third.vNames, std::vector<std::string>{"step"});
    third.action = [] { throw LumoException(); };
    EXPECT_THROW(progress.step(1), LumoException);
    third.action = nullptr;
    progress.step(1); // the step has ended with the operation that it belonged to
    EXPECT_EQ(third.vFractions, (Fractions{0.25, 0.1}));
}

TEST(ProgressTest, ChildrenMoveTheirParentsAndLinksDieWithEitherSide)
{
    const lumo_test::TempWorkDir dir;
    const lumo_test::CoutCapture out;
    auto pParent = std::make_unique<Progress>("parent"), pChild = std::make_unique<Progress>("child");
    Listener top, low;
    pParent->subscribe(MSG_PROGRESS, &top);
    pChild->subscribe(MSG_PROGRESS, &low);
    for (int i = 0; i < 2; ++i) pParent->addChild(pChild.get()); // counts once
    EXPECT_THROW(pChild->addChild(pParent.get()), LumoException);
    pParent->start("outer", 4);
    pParent->step(1);
    pChild->start("inner", 4);
    pChild->step(2);
    EXPECT_EQ(top.vFractions, (Fractions{0.25, 0.75})); // the sum of both, not their mean
    EXPECT_EQ(low.vFractions, Fractions{0.5});
    pChild.reset();
    pParent->step(1);
    EXPECT_EQ(top.vFractions.back(), 0.5);
    Progress orphan("orphan");
    pParent->addChild(&orphan);
    pParent.reset();
    orphan.subscribe(MSG_PROGRESS, &low);
    orphan.start("alone", 2);
    orphan.step(1); // a dead parent would be seen by the address sanitizer
}

} // namespace ORBI_LUMO25D
