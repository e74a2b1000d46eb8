#include "toml/ParseToml.h"

#include <gtest/gtest.h>

namespace Korvex3Sync::tests {
namespace {

/// "a.a.a" and so on.
std::string Key(std::size_t parts, const std::string& dot = ".") {
    std::string key = "a";
    for (std::size_t part = 1; part < parts; ++part) {
        key += dot + "a";
    }
    return key;
}

bool Taken(const std::string& text) {
    return std::holds_alternative<toml::table>(ParseToml(text));
}

void ExpectTooDeep(const std::string& text, int line = 1) {
    const auto parsed = ParseToml(text);
    const auto* const error = std::get_if<TomlError>(&parsed);
    ASSERT_NE(error, nullptr) << text.substr(0, 80);
    EXPECT_EQ(error->what, "a key has more than 8 dotted parts") << text.substr(0, 80);
    EXPECT_EQ(error->line, line) << text.substr(0, 80);
}

TEST(ParseToml, TakesWhatPeopleWrite) {
    const auto parsed = ParseToml("[camera]\nwidth = 64\n[[fault]]\nchance = 0.5 # rarely\n");
    ASSERT_TRUE(std::holds_alternative<toml::table>(parsed));
    EXPECT_EQ(std::get<toml::table>(parsed)["camera"]["width"].value<int>(), 64);
}

TEST(ParseToml, NamesTheLineOfAMistake) {
    const auto parsed = ParseToml("a = 1\nb = = 2\n");
    ASSERT_TRUE(std::holds_alternative<TomlError>(parsed));
    EXPECT_EQ(std::get<TomlError>(parsed).line, 2);
}

TEST(ParseToml, RefusesAKeyThatWouldEndTheProcess) {
    constexpr std::size_t kParts = 40000;
    ExpectTooDeep(Key(kParts) + " = 1");
    ExpectTooDeep("[" + Key(kParts) + "]");
    ExpectTooDeep("[[" + Key(kParts) + "]]");
    ExpectTooDeep("b = {" + Key(kParts) + " = 1}");
}

TEST(ParseToml, RefusesMoreThanEightPartsHoweverTheyAreWritten) {
    EXPECT_TRUE(Taken(Key(8) + " = 1"));
    EXPECT_TRUE(Taken("[" + Key(8) + "]"));
    ExpectTooDeep(Key(9) + " = 1");
    ExpectTooDeep("\n\n" + Key(9, " . ") + " = 1", 3);
    ExpectTooDeep("\"a\"." + Key(8) + " = 1");
    ExpectTooDeep(Key(8) + ".\"a\" = 1");
    ExpectTooDeep("'a" + std::string("'.'a'") + "." + Key(7) + " = 1");
    ExpectTooDeep("b = [1, {" + Key(9) + " = 1}]");
}

TEST(ParseToml, CountsNoDotsOfStringsCommentsAndNumbers) {
    const std::string dots = Key(20);
    EXPECT_TRUE(Taken("a = \"" + dots + "\""));
    EXPECT_TRUE(Taken("a = \"\\\"" + dots + "\""));
    EXPECT_TRUE(Taken("a = '" + dots + "'"));
    EXPECT_TRUE(Taken("a = \"\"\"\n" + dots + "\n\"" + dots + "\"\"\""));
    EXPECT_TRUE(Taken("a = '''\n" + dots + "\n'" + dots + "'''"));
    EXPECT_TRUE(Taken("a = 1 # " + dots + "\nb = 2"));
    EXPECT_TRUE(Taken("a = [0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0]"));
    EXPECT_TRUE(Taken("\"" + dots + "\" = 1")) << "one part";
}

TEST(ParseToml, FindsAKeyBehindStringsAndComments) {
    const std::string deep = Key(9) + " = 1";
    ExpectTooDeep("a = \"\\\\\"\n" + deep, 2);
    ExpectTooDeep("a = '\\'\n" + deep, 2);
    ExpectTooDeep("a = \"\"\n" + deep, 2);
    ExpectTooDeep("a = \"\"\"x\"\"\"\n" + deep, 2);
    ExpectTooDeep("a = \"\"\"x\"\"\"\"\n" + deep, 2);
    ExpectTooDeep("a = '''x\n'''''\n" + deep, 3);
    ExpectTooDeep("a = 1 # \"\n" + deep, 2);
}

TEST(ParseToml, TakesAnyMixtureOfWhatIsAllowedWithoutACrash) {
    constexpr int kNested = 250;
    std::string text;
    for (int level = 0; level < kNested; ++level) {
        text += Key(8) + " = {";
    }
    text += "a = 1" + std::string(kNested, '}');
    EXPECT_TRUE(Taken(text));
    EXPECT_FALSE(Taken(std::string(200000, '[')));
    EXPECT_FALSE(Taken("a = " + std::string(200000, '{')));
    EXPECT_FALSE(Taken("a = \"" + Key(20)));
    EXPECT_FALSE(Taken("a = \"\"\"" + Key(20)));
    EXPECT_FALSE(Taken("a = \"\\"));
}

}  // namespace
}  // namespace Korvex3Sync::tests
