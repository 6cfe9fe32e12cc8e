// Compares what the built library exports with what the public headers declare: a name that only the library has has
// leaked out, one that only the headers have was forgotten.

#include "tests/support/surroundings.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <string>

namespace {

using Names = std::set<std::string>;

/// The text without comments and preprocessor lines.
std::string CodeOf(const std::string& header)
{
    std::string code;
    for (const std::string& line : test::Lines(test::ReadFile(std::string(SOURCE_FOLDER "/") + header))) {
        if (line.empty() || line.front() != '#') {
            code += line.substr(0, line.find("//")) + '\n';
        }
    }
    return code;
}

/// Place behind the bracket that closes the one at `open`.
std::size_t EndOfBlock(const std::string& code, std::size_t open)
{
    int depth = 0;
    for (std::size_t place = open; place < code.size(); ++place) {
        depth += code[place] == '{' ? 1 : code[place] == '}' ? -1 : 0;
        if (depth == 0) {
            return place + 1;
        }
    }
    return code.size();
}

/// What a declaration in a class names, when the library must export it: functions without a body in the header, and
/// static data.
std::string NameOf(const std::string& declaration)
{
    static const std::regex function(R"((~?\w+|operator[^\s\w(]+)\s*\()");
    static const std::regex data(R"(\bstatic\b[^=]*\b(\w+)\s*$)");
    std::smatch match;
    const bool isElsewhere =
        std::regex_search(declaration, std::regex(R"(\bfriend\b|\bconstexpr\b|=\s*(default|delete|0)\s*$)"));
    const std::string uninitialised = declaration.substr(0, declaration.find(" = "));
    const bool isFunction = std::regex_search(uninitialised, match, function);
    return !isElsewhere && (isFunction || std::regex_search(uninitialised, match, data)) ? match.str(1) : "";
}

void AddMembers(const std::string& className, std::string body, Names& names)
{
    body = std::regex_replace(body, std::regex(R"(\b(public|protected|private):)"), ";");
    for (std::size_t open = body.find('{'); open != std::string::npos; open = body.find('{')) {
        // With its body goes the declaration in front of it.
        const std::size_t start = body.rfind(';', open);
        body.replace(start + 1, EndOfBlock(body, open) - start - 1, ";");
    }
    for (std::size_t start = 0, end = 0; (end = body.find(';', start)) != std::string::npos; start = end + 1) {
        const std::string name = NameOf(body.substr(start, end - start));
        if (!name.empty()) {
            names.insert(std::string(className).append("::").append(name));
        }
    }
}

Names DeclaredNames()
{
    Names names;
    static const std::regex include(R"re(#include "(zrlib/[^"]+)")re");
    static const std::regex function(R"(ZR_API\s+(?!class)[^;(]*\b(\w+)\s*\()");
    static const std::regex classHead(R"(class\s+ZR_API\s+(\w+)[^;{]*\{)");
    const std::string all = test::ReadFile(SOURCE_FOLDER "/zrlib/zrlib.h");
    for (std::sregex_iterator header(all.begin(), all.end(), include), end; header != end; ++header) {
        std::string code = CodeOf(header->str(1));
        std::smatch match;
        while (std::regex_search(code, match, classHead)) {
            const auto open = static_cast<std::size_t>(match.position() + match.length() - 1);
            const std::size_t close = EndOfBlock(code, open);
            AddMembers(match.str(1), code.substr(open + 1, close - open - 2), names);
            if (std::regex_search(code.substr(open, close - open), std::regex(R"(\b(virtual|override)\b)"))) {
                names.insert("class " + match.str(1)); // its table of virtual operations
            }
            code.erase(static_cast<std::size_t>(match.position()), close - static_cast<std::size_t>(match.position()));
        }
        for (std::sregex_iterator found(code.begin(), code.end(), function); found != end; ++found) {
            names.insert(found->str(1));
        }
    }
    return names;
}

Names ExportedNames()
{
    Names names;
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen("nm -DC --defined-only '" ZRLIB_FILE "'", "r"), pclose);
    std::array<char, 1000> line;
    while (fgets(line.data(), line.size(), output.get()) != nullptr) { // "0000000000005b60 T ZRMode::IsCache()"
        std::string name = std::string(line.data()).substr(19);
        name = name.substr(0, name.find_first_of("(\n"));
        const std::string ofClass = " for ";
        const std::size_t place = name.find(ofClass);
        names.insert(place != std::string::npos ? "class " + name.substr(place + ofClass.size()) : name);
    }
    return names;
}

Names Difference(const Names& from, const Names& names)
{
    Names difference;
    std::set_difference(
        from.begin(), from.end(), names.begin(), names.end(), std::inserter(difference, difference.end()));
    return difference;
}

TEST(Exports, AreWhatThePublicHeadersDeclare)
{
    const Names declared = DeclaredNames();
    const Names exported = ExportedNames();
    EXPECT_GT(declared.size(), 100U);
    EXPECT_TRUE(declared.count("ZROut") && declared.count("ZRMessageHandler::SetOutFile")
        && declared.count("ZRMode::m_main_thread") && declared.count("ZRMsg::operator==")); // the reading works
    EXPECT_EQ(Difference(exported, declared), Names{}) << "leaked out";
    EXPECT_EQ(Difference(declared, exported), Names{}) << "forgotten";
}

} // namespace
