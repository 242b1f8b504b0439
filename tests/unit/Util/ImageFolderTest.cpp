// Image directories that a shell or a buffer would make something else of.
#include <sstream>
#include <string>

#include "ChildProcess.h"
#include "ObservedTest.h"

using TestSupport::ChildProcess;

namespace {

// A download, and what the probe said it asked of the shell and the file system.
List probe(const std::string& imageFolder)
{
    ChildProcess process({IMAGE_PROBE, imageFolder}, {{"IMAGE_FOLDER", imageFolder}});
    const TestSupport::ProcessEnd end = process.wait();
    EXPECT_EQ(end.status, 0) << process.errors();
    std::istringstream text(process.output());
    List lines;
    for (std::string line; std::getline(text, line);)
        if (line.rfind("asked: ", 0) == 0)
            lines.push_back(line.substr(7));
    return lines;
}

}  // namespace

TEST(ImageFolder, AShortPlainOneIsGivenToTheShell)
{
    const List asked = probe("/nowhere/tmp");

    ASSERT_FALSE(asked.empty());
    EXPECT_EQ(asked.front(), "system rm -rf /nowhere/tmp");
    EXPECT_EQ(asked.back(), "system rm -rf /nowhere/tmp");
}

TEST(ImageFolder, OneInAnotherScriptIsPlain)
{
    EXPECT_EQ(probe("/nowhere/그림").front(), "system rm -rf /nowhere/그림");
}

TEST(ImageFolder, OneThatAShellReadsAsSomethingElseIsNeverGivenToIt)
{
    for (const std::string path :
         {"/tmp/a b",  "/tmp/a;id",    "/tmp/$HOME", "/tmp/`id`", "/tmp/*",   "/tmp/a'b",
          "/tmp/a\"b", "/tmp/a\\b",    "/tmp/a\nb",  "/tmp/a|b",  "/tmp/a&b", "/tmp/~",
          "/tmp/#",    "/tmp/(a)",     "/tmp/?",     "/tmp/[a]",  "/tmp/{a}", "/tmp/<a",
          "/tmp/!",    "relative/tmp", "-rf",        "/",         ""}) {
        for (const std::string& line : probe(path))
            EXPECT_EQ(line.find("system"), std::string::npos) << path << ": " << line;
    }
}

TEST(ImageFolder, OneWhoseCommandWouldBeCutIsNeverGivenToAShell)
{
    const std::string longest = "/" + std::string(127 - 7 - 1, 'x');

    EXPECT_EQ(probe(longest).front(), "system rm -rf " + longest);
    for (const std::string& line : probe(longest + "x"))
        EXPECT_EQ(line.find("system"), std::string::npos) << line;
}

TEST(ImageFolder, OneThatLeavesNoRoomForANameIsNeverWrittenTo)
{
    for (const size_t size : {126U, 127U, 128U, 300U})
        for (const std::string& line : probe("/" + std::string(size - 1, 'x')))
            EXPECT_EQ(line.find("fopen"), std::string::npos) << size << ": " << line;
}

TEST(ImageFolder, OneThatLeavesRoomForOneByteIsStillNotLeft)
{
    const std::string path = "/" + std::string(124, 'x');

    List opened;
    for (const std::string& line : probe(path))
        if (line.rfind("fopen ", 0) == 0)
            opened.push_back(line.substr(6));
    EXPECT_EQ(opened, List{path + "/1"});
}
