#include "support/check.h"

#include "LumoException.h"
#include "TestOutput.h"
#include "support/functionName.h"
#include "support/messages.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <map>
#include <utility>

using lumo_test::CoutCapture;
using lumo_test::readFile;
using lumo_test::TempWorkDir;

namespace ORBI_LUMO25D
{

/// Real functions, so that the names are tested on what this compiler really says.
struct CheckShapes
{
    static std::map<int, std::pair<int, int>> staticMap() { LUMO_CHECK(false, "static"); }
    void (*functionPointer(int))(double) { LUMO_CHECK(false, "function pointer"); }
};

TEST(CheckTest, FailurePrintsConditionPlaceAndFunctionAndLeavesStreamAlone)
{
    TempWorkDir dir;
    CoutCapture out;
    std::cout << std::hex << std::setfill('#') << std::setw(40);
    EXPECT_THROW(failCondition("a == b", "int N::f(int)", "some/file.cpp", 1234), LumoException);
    EXPECT_EQ(out.take(), "\n      [Lumo2D-Message] * Lumo, , ERROR: Condition [ a == b failed ]\n\n"
                          "* Lumo, Condition [ a == b failed ]\n  some/file.cpp:1234\n  Function: N::f()\n");
    EXPECT_EQ(readFile("LUMO_LOG.txt"), "* Lumo, Condition [ a == b failed ]\n");
    EXPECT_EQ(std::cout.width(), 40);
    std::cout.copyfmt(std::ios(nullptr));
    logLine("the second"); // the file holds the last text alone
    EXPECT_EQ(readFile("LUMO_LOG.txt"), "the second\n");
    std::filesystem::remove("LUMO_LOG.txt");
    std::filesystem::create_directory("LUMO_LOG.txt"); // a log that can't be opened doesn't hide the failure
    EXPECT_THROW(CheckShapes::staticMap(), LumoException);
    EXPECT_THROW(CheckShapes().functionPointer(1), LumoException);
    const std::string text = out.take(), function = "\n  Function: ORBI_LUMO25D::CheckShapes::";
    EXPECT_NE(text.find(function + "staticMap()\n"), std::string::npos) << text;
    EXPECT_NE(text.find(function + "functionPointer()\n"), std::string::npos) << text;
}

TEST(CheckTest, FunctionNameIsQualifiedAndBareForBothCompilers)
{
    const std::pair<const char*, const char*> aCases[] = {
        {"int (& N::A::arrayReference())[3]", "N::A::arrayReference"},
        {"A::(anonymous namespace)::B &A::(anonymous namespace)::B::g()", "A::(anonymous namespace)::B::g"},
        {"std::enable_if_t<(sizeof (T) > 2), T> N::f(T) [with T = int; U = void(int)]", "N::f"},
        {"decltype (a.size()) N::f(T) [with T = V]", "N::f"},
        {"void (N::A::* N::A::pmf(int))(double)", "N::A::pmf"},
        {"const std::vector<int> *N::A::operator const std::vector<int> *() const",
         "N::A::operator const std::vector<int> *"},
        {"N::A::f() const::<lambda(int)>", "N::A::f::<lambda>"},
        {"auto N::A::f(int)::(anonymous class)::operator()(int) const", "N::A::f::(anonymous class)::operator()"},
        {"broken(", "broken"},
        {"<<<((", "<<<(("},
    };
    for (const auto& [signature, name] : aCases) EXPECT_EQ(qualifiedFunctionName(signature), name) << signature;
}

TEST(MessagesTest, TextsAreByteForByte)
{
    CoutCapture out;
    msgWarning("F", "M");
    msgError("F", "M");
    msgInfo("F", "M");
    msgInfo("", "M");
    EXPECT_EQ(out.take(), "\n      [Lumo2D-Message] F, WARNING: M\n\n\n      [Lumo2D-Message] F, ERROR: M\n\n"
                          "\n      F, INFO: M\n\n\n      [Lumo2D-Message] INFO: M\n\n");
    printBanner("S");
    const std::string bar = std::string(71, '*') + "\n";
    EXPECT_EQ(out.take(), "\n\n" + bar + bar + "               S\n" + bar + bar + "\n\n");
    EXPECT_EQ(std::string(LumoException().what()).find("\n  LUMO EXCEPTION due to a bug _or_ wrong usage of Lumo."),
              0U);
}

} // namespace ORBI_LUMO25D
