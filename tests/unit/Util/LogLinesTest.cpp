// The sources, held to the table of fixed log statements: a line that moves is a line that users miss.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "SourceText.h"

namespace fs = std::filesystem;

namespace {

struct Row {
    std::string file;
    std::string function;
    size_t line;
    std::string level;
    std::string message;
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.file << ":" << row.line << " " << row.message;
}

const std::map<std::string, std::string> kMacros = {
    {"debug", "LOG_D"}, {"info", "LOG_I"}, {"error", "LOG_E"}};

Row parseRow(const std::string& text)
{
    std::istringstream stream(text);
    Row row;
    std::string line;
    std::getline(stream, row.file, ',');
    std::getline(stream, row.function, ',');
    std::getline(stream, line, ',');
    std::getline(stream, row.level, ',');
    std::getline(stream, row.message);
    row.line = std::stoul(line);
    return row;
}

std::vector<Row> table()
{
    std::ifstream file(LOG_LINES);
    std::vector<Row> rows;
    std::string text;
    std::getline(file, text);
    while (std::getline(file, text))
        rows.push_back(parseRow(text));
    return rows;
}

std::vector<fs::path> sources()
{
    std::vector<fs::path> paths;
    for (const char* folder : {"/service", "/common"})
        for (const fs::directory_entry& entry :
             fs::recursive_directory_iterator(SOURCE_FOLDER + std::string(folder)))
            if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h")
                paths.push_back(entry.path());
    return paths;
}

// The one source of that name; the test fails where there is none, or more than one.
SourceText sourceOf(const std::string& name)
{
    std::vector<fs::path> found;
    for (const fs::path& path : sources())
        if (path.filename() == name)
            found.push_back(path);
    EXPECT_EQ(found.size(), 1U) << name;
    return SourceText(found.empty() ? "" : found[0].string());
}

std::string statementOf(const Row& row)
{
    return kMacros.at(row.level) + "(\"" + row.message + "\"";
}

class LogLine : public testing::TestWithParam<Row> {};

std::string nameOf(const testing::TestParamInfo<Row>& row)
{
    std::string name = row.param.file + "_" + std::to_string(row.param.line);
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
}

}  // namespace

TEST_P(LogLine, StandsWhereUsersSeeIt)
{
    const SourceText source = sourceOf(GetParam().file);
    const std::string line = source.line(GetParam().line);
    const std::string statement = statementOf(GetParam());
    const size_t start = line.find_first_not_of(' ');

    ASSERT_NE(start, std::string::npos);
    EXPECT_EQ(line.substr(start, statement.size()), statement);
    EXPECT_EQ(line.substr(line.size() - 2), ");") << "the statement must end on its line";
    EXPECT_EQ(source.functionAt(GetParam().line), GetParam().function);
}

INSTANTIATE_TEST_SUITE_P(Table, LogLine, testing::ValuesIn(table()), nameOf);

TEST(LogLines, TheTableHasEachStatementOnce)
{
    std::set<std::pair<std::string, size_t>> places;
    for (const Row& row : table())
        EXPECT_TRUE(places.insert({row.file, row.line}).second) << row.file << ":" << row.line;
    EXPECT_EQ(places.size(), 81U);
}

TEST(LogLines, NoStatementOutsideTheTableIsAnInfo)
{
    std::set<std::pair<std::string, size_t>> infos;
    for (const Row& row : table())
        if (row.level == "info")
            infos.insert({row.file, row.line});

    for (const fs::path& path : sources()) {
        const SourceText source(path.string());
        for (const size_t line : source.linesWith("LOG_I(")) {
            const bool isDefinition = source.line(line).rfind("#define LOG_I(", 0) == 0;
            EXPECT_TRUE(isDefinition || infos.count({path.filename(), line})) << path << ":" << line;
        }
    }
}

TEST(LogLines, OnlyTheLogHeaderCallsThePlatformsLog)
{
    for (const fs::path& path : sources()) {
        const size_t uses = SourceText(path.string()).linesWith("dlog_").size();
        EXPECT_EQ(uses, path.filename() == "Log.h" ? 1U : 0U) << path;
    }
}

TEST(LogLines, OnlyTheLogHeaderPrints)
{
    for (const fs::path& path : sources())
        for (const char* output : {"printf(", "puts(", "std::cout", "std::cerr"})
            EXPECT_EQ(SourceText(path.string()).linesWith(output).size(),
                      path.filename() == "Log.h" && output == std::string("printf(") ? 1U : 0U)
                << path << " " << output;
}

TEST(LogLines, NoPriorityButTheThreeIsUsed)
{
    for (const fs::path& path : sources())
        for (const char* priority : {"DLOG_VERBOSE", "DLOG_WARN", "DLOG_FATAL"})
            EXPECT_TRUE(SourceText(path.string()).linesWith(priority).empty()) << path << " " << priority;
}

TEST(LogLines, AFunctionIsFoundThroughBlocksAndLambdas)
{
    const SourceText source = SourceText::fromText(
        "namespace n {\n"
        "struct S {\n"
        "    void inside() const { f(); }\n"
        "};\n"
        "int S::member(int a)\n"
        "{\n"
        "    if (a) {\n"
        "        f();  // {\n"
        "    }\n"
        "    auto visit = [](int b) {\n"
        "        for (;;) {\n"
        "            g(\"}\");\n"
        "        }\n"
        "    };\n"
        "    h([&] { i(); });\n"
        "    return a;\n"
        "}\n"
        "int tried()\n"
        "try {\n"
        "    return f();\n"
        "} catch (const E& e) {\n"
        "    g(e);\n"
        "}\n"
        "}\n");

    EXPECT_EQ(source.functionAt(3), "inside");
    EXPECT_EQ(source.functionAt(8), "member");
    EXPECT_EQ(source.functionAt(12), "operator()");
    EXPECT_EQ(source.functionAt(15), "operator()");
    EXPECT_EQ(source.functionAt(16), "member");
    EXPECT_EQ(source.functionAt(2), "");
    EXPECT_EQ(source.functionAt(20), "tried");
    EXPECT_EQ(source.functionAt(22), "tried");
    EXPECT_EQ(source.functionAt(24), "");
}
