#include "support/check.h"

#include "LumoException.h"
#include "TestOutput.h"
#include "support/functionName.h"
#include "support/messages.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <map>
#include <utility>
#include <vector>

using lumo_test::CoutCapture;
using lumo_test::readFile;
using lumo_test::TempWorkDir;

// Real functions of many shapes, so that the names are tested on what this compiler really says.
namespace ORBI_LUMO25D
{

namespace check_test
{

struct Shapes
{
    virtual ~Shapes() = default;
    virtual void virtualConst(const std::string&) const { LUMO_CHECK(false, "virtual"); }
    static std::map<int, std::vector<std::pair<int, int>>> staticMap() { LUMO_CHECK(false, "static"); }
    bool operator()(int, int) const { LUMO_CHECK(false, "call"); }
    explicit operator bool() const { LUMO_CHECK(false, "conversion"); }
    void (*functionPointer(int))(double) { LUMO_CHECK(false, "function pointer"); }
    template <typename T>
    std::pair<T, int> templated(T)
    {
        LUMO_CHECK(false, "template");
    }
    void local() const
    {
        struct Local
        {
            static void inner(int) { LUMO_CHECK(false, "local"); }
        };
        Local::inner(1);
    }
};

const char* const* fails(int line)
{
    if (line > 0) failCondition("a == b", __PRETTY_FUNCTION__, "some/file.cpp", line);
    return nullptr;
}

/// The name in the output of the failure that `f` runs into.
template <typename F>
std::string nameIn(F f)
{
    CoutCapture out;
    EXPECT_THROW(f(), LumoException);
    const std::string text = out.take();
    const std::string head = "\n  Function: ";
    const std::size_t begin = text.find(head) + head.size();
    return text.substr(begin, text.find("()\n", begin) - begin);
}

} // namespace check_test

using namespace check_test;

TEST(CheckTest, FailurePrintsConditionPlaceAndFunctionAndLeavesStreamAlone)
{
    TempWorkDir dir;
    CoutCapture out;
    std::cout << std::hex << std::showbase << std::left << std::setfill('#') << std::setprecision(11) << std::setw(40);
    const std::ios_base::fmtflags flags = std::cout.flags();

    EXPECT_THROW(fails(1234), LumoException);
    EXPECT_EQ(out.take(), "\n      [Lumo2D-Message] * Lumo, , ERROR: Condition [ a == b failed ]\n\n"
                          "* Lumo, Condition [ a == b failed ]\n"
                          "  some/file.cpp:1234\n"
                          "  Function: ORBI_LUMO25D::check_test::fails()\n");
    EXPECT_EQ(readFile("LUMO_LOG.txt"), "* Lumo, Condition [ a == b failed ]\n");
    EXPECT_EQ(std::cout.flags(), flags);
    EXPECT_EQ(std::cout.precision(), 11);
    EXPECT_EQ(std::cout.width(), 40);
    EXPECT_EQ(std::cout.fill(), '#');
    std::cout.copyfmt(std::ios(nullptr));

    logLine("the second"); // the file holds the last text alone
    EXPECT_EQ(readFile("LUMO_LOG.txt"), "the second\n");
}

TEST(CheckTest, LogThatCannotBeOpenedDoesNotHideTheFailure)
{
    TempWorkDir dir;
    std::filesystem::create_directory("LUMO_LOG.txt");
    CoutCapture out;
    EXPECT_THROW(fails(1), LumoException);
    EXPECT_NE(out.take().find("Function: "), std::string::npos);
}

TEST(CheckTest, FunctionNameIsQualifiedAndBareForEveryShapeOfFunction)
{
    TempWorkDir dir;
    Shapes s;
    const Shapes& c = s;
    const std::string scope = "ORBI_LUMO25D::check_test::Shapes::";
    EXPECT_EQ(nameIn([&] { c.virtualConst(""); }), scope + "virtualConst");
    EXPECT_EQ(nameIn([] { Shapes::staticMap(); }), scope + "staticMap");
    EXPECT_EQ(nameIn([&] { return c(1, 2); }), scope + "operator()");
    EXPECT_EQ(nameIn([&] { return static_cast<bool>(c); }), scope + "operator bool");
    EXPECT_EQ(nameIn([&] { s.functionPointer(1); }), scope + "functionPointer");
    EXPECT_EQ(nameIn([&] { s.templated(1.0); }), scope + "templated");
    EXPECT_EQ(nameIn([&] { c.local(); }), scope + "local::Local::inner");
}

TEST(CheckTest, FunctionNameUnderstandsBothCompilers)
{
    const std::pair<const char*, const char*> aCases[] = {
        {"int main(int, char**)", "main"},
        {"ORBI_LUMO25D::Dt2::Dt2(int (*)(double))", "ORBI_LUMO25D::Dt2::Dt2"},
        {"N::A *N::A::operator->()", "N::A::operator->"},
        {"int (& N::A::arrayReference())[3]", "N::A::arrayReference"},
        {"ORBI_LUMO25D::Dt2::~Dt2()", "ORBI_LUMO25D::Dt2::~Dt2"},
        {"int ORBI_LUMO25D::{anonymous}::f(int)", "ORBI_LUMO25D::{anonymous}::f"},
        {"int (anonymous namespace)::f(int)", "(anonymous namespace)::f"},
        {"A::(anonymous namespace)::B &A::(anonymous namespace)::B::g()", "A::(anonymous namespace)::B::g"},
        {"std::enable_if_t<(sizeof (T) > 2), T> N::f(T) [with T = int; U = void(int)]", "N::f"},
        {"T *N::Pool<int, 3>::get(int) [T = int, N = 3]", "N::Pool<int, 3>::get"},
        {"decltype (a.size()) N::f(T) [with T = V]", "N::f"},
        {"decltype(auto) N::f()", "N::f"},
        {"void (N::A::* N::A::pmf(int))(double)", "N::A::pmf"},
        {"const std::vector<int> *N::A::operator const std::vector<int> *() const",
         "N::A::operator const std::vector<int> *"},
        {"bool N::operator<<(std::vector<T>, A&) [with T = int]", "N::operator<<"},
        {"void N::operators_are_no_keyword()", "N::operators_are_no_keyword"},
        {"N::A::f() const::<lambda(int)>", "N::A::f::<lambda>"},
        {"auto N::A::f(int)::(anonymous class)::operator()(int) const", "N::A::f::(anonymous class)::operator()"},
        {"std::string N::f[abi:cxx11](int)", "N::f"},
        {"no signature", "no signature"},
        {"broken(", "broken"},
        {"<<<((", "<<<(("},
        {"", ""},
    };
    for (const auto& [signature, name] : aCases) EXPECT_EQ(qualifiedFunctionName(signature), name) << signature;
}

TEST(MessagesTest, TextsAreByteForByte)
{
    CoutCapture out;
    msgWarning("F", "M");
    EXPECT_EQ(out.take(), "\n      [Lumo2D-Message] F, WARNING: M\n\n");
    msgError("F", "M");
    EXPECT_EQ(out.take(), "\n      [Lumo2D-Message] F, ERROR: M\n\n");
    msgInfo("F", "M");
    EXPECT_EQ(out.take(), "\n      F, INFO: M\n\n");
    msgInfo("", "M");
    EXPECT_EQ(out.take(), "\n      [Lumo2D-Message] INFO: M\n\n");
    printBanner("S");
    const std::string bar = "***********************************************************************\n";
    EXPECT_EQ(out.take(), "\n\n" + bar + bar + "               S\n" + bar + bar + "\n\n");
    EXPECT_EQ(std::string(LumoException().what())
                  .find("\n  LUMO EXCEPTION due to a bug _or_ wrong usage of Lumo. If "
                        "you think it is a \n  bug then please report this incident "
                        "and it will be fixed quickly: "),
              0U);
}

} // namespace ORBI_LUMO25D
