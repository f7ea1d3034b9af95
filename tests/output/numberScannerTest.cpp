#include "output/numberScanner.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <sstream>
#include <string>

namespace ORBI_LUMO25D
{

namespace
{

/// What the input stream itself makes of the text: all numbers up to the first failure, bit by bit.
std::vector<double> byStream(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<double> vValues;
    for (double value = 0.0; stream >> value;) vValues.push_back(value);
    return vValues;
}

std::vector<double> byReader(const std::string& text)
{
    std::istringstream stream(text);
    NumberReader reader(stream);
    std::vector<double> vValues;
    for (double value = 0.0; reader.next(value);) vValues.push_back(value);
    return vValues;
}

bool sameBits(const std::vector<double>& a, const std::vector<double>& b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

} // namespace

TEST(NumberScannerTest, ReadsExactlyWhatAStreamReads)
{
    std::mt19937_64 random(11);
    const std::string alphabet = "0011223344556789....eE+-- \n\tnaifx,";
    for (int run = 0; run < 20000; ++run) {
        std::string text;
        for (std::uint64_t length = random() % 24; length > 0; --length) text += alphabet[random() % alphabet.size()];
        ASSERT_TRUE(sameBits(byReader(text), byStream(text))) << "seed 11 [" << text << "]";
    }
    for (const char* pText : {"2.2250738585072011e-308", "4.9e-324", "2e-324", "1.7976931348623159e308", "1e309",
                              "9007199254740993", "0.1e99999999999999999999", "-0"}) {
        EXPECT_TRUE(sameBits(byReader(pText), byStream(pText))) << pText;
    }
}

TEST(NumberScannerTest, NumbersSurviveTheBordersOfThePieces)
{
    std::mt19937_64 random(12);
    const std::size_t numNumbers = 20000;
    std::string text;
    for (std::size_t i = 0; i < numNumbers; ++i) {
        text += std::to_string(static_cast<std::int64_t>(random())) + "." + std::to_string(random() % 1000) + "e-" +
                std::to_string(random() % 30);
        text += std::string(1 + random() % 3, random() % 2 == 0 ? ' ' : '\n');
        if (i == numNumbers / 2) text += std::string(100000, ' ') + std::string(200000, '1') + ".5e-199990 ";
    }
    const std::vector<double> vValues = byReader(text);
    EXPECT_EQ(vValues.size(), numNumbers + 1);
    EXPECT_TRUE(sameBits(vValues, byStream(text))) << "seed 12";
}

} // namespace ORBI_LUMO25D
