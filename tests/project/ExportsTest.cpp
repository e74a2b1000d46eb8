#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cxxabi.h>

#include <cctype>
#include <cstdlib>
#include <memory>
#include <set>
#include <sstream>

#include "project/DeclaredFunctions.h"
#include "support/ChildProcess.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::IsEmpty;

std::string Demangled(const std::string& symbol) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), std::free);
    return name ? name.get() : symbol;
}

/// The dynamic symbols that a library defines, demangled. A version node is no symbol.
std::vector<std::string> ExportsOf(const std::string& library) {
    const ChildResult nm = RunChild({"nm", "-D", "--defined-only", "--format=posix", library});
    EXPECT_EQ(nm.exitCode, 0) << nm.error;
    std::vector<std::string> symbols;
    std::istringstream lines(nm.output);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string symbol;
        std::string type;
        words >> symbol >> type;
        if (type != "A") {
            symbols.push_back(Demangled(symbol.substr(0, symbol.find('@'))));
        }
    }
    return symbols;
}

std::string WordAt(const std::string& text, std::size_t start) {
    std::size_t end = start;
    while (end < text.size() &&
           (std::isalnum(static_cast<unsigned char>(text[end])) != 0 || text[end] == '_')) {
        ++end;
    }
    return text.substr(start, end - start);
}

/// "Name" of "Korvex3Sync::Name(...)"; empty for anything else.
std::string ExportedFunction(const std::string& symbol) {
    const std::string space = "Korvex3Sync::";
    if (!symbol.starts_with(space) || !symbol.ends_with(')')) {
        return "";
    }
    const std::string name = WordAt(symbol, space.size());
    return symbol[space.size() + name.size()] == '(' ? name : "";
}

TEST(Exports, AreTheDeclaredFunctionsAndNothingElse) {
    std::multiset<std::string> exported;
    std::vector<std::string> others;
    for (const std::string& symbol : ExportsOf(KORVEX_LIBRARY)) {
        const std::string name = ExportedFunction(symbol);
        if (name.empty()) {
            others.push_back(symbol);
        } else {
            exported.insert(name);
        }
    }
    EXPECT_THAT(others, IsEmpty());
    EXPECT_EQ(exported, DeclaredFunctions());
    EXPECT_TRUE(exported.contains("ConnectDevice"));
}

TEST(Exports, OfTheServiceClientAreItsOneClass) {
    bool hasSignals = false;
    for (const std::string& symbol : ExportsOf(KORVEX_SYNC_INTERFACE)) {
        EXPECT_TRUE(symbol.starts_with("SyncInterface::") || symbol.ends_with(" for SyncInterface"))
            << symbol;
        hasSignals = hasSignals || symbol.starts_with("SyncInterface::sendCallback(");
    }
    EXPECT_TRUE(hasSignals);
}

TEST(Exports, AClassOrAnotherNamespaceWouldBeNoticed) {
    EXPECT_EQ(ExportedFunction("Korvex3Sync::Project(void* const&)"), "Project");
    EXPECT_EQ(ExportedFunction("Korvex3Sync::sync::IManagerSync::Open(int)"), "");
    EXPECT_EQ(ExportedFunction("std::vector<int>::push_back(int const&)"), "");
    EXPECT_EQ(ExportedFunction("vtable for Korvex3Sync::sync::IManagerSync"), "");
}

}  // namespace

}  // namespace Korvex3Sync::tests
