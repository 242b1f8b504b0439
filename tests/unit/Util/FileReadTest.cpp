// Files that are read whole, and those that cannot be.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "ChildProcess.h"
#include "FileFixture.h"

using TestSupport::Calls;
using Util::FileContent;
using Util::FileHelper;

namespace fs = std::filesystem;

namespace {

class FileRead : public FileTest {
  protected:
    // Reading fails with this one error, and the earlier data stays.
    static void expectFailure(const std::string& path, const std::string& message)
    {
        FileContent content(path.c_str());
        set(content, "earlier");
        const size_t logged = failures().size();

        EXPECT_FALSE(FileHelper::read(content)) << path;
        EXPECT_EQ(dataOf(content), "earlier") << path;
        List texts = failures();
        ASSERT_EQ(texts.size(), logged + 1) << path;
        EXPECT_EQ(texts.back(), "read > " + message + path);
    }

    static void expectNoFile(const std::string& path) { expectFailure(path, "File open fail, path = "); }

    static void expectNotRead(const std::string& path)
    {
        expectFailure(path, "file read fail , path = ");
        EXPECT_TRUE(allAreClosed()) << path;
    }
};

}  // namespace

TEST_F(FileRead, TheWholeFileBecomesTheData)
{
    for (const size_t count : {1U, 2U, 4095U, 4096U, 4097U, 1'000'000U}) {
        const std::string path = make("file", bytes(count));
        FileContent content(path.c_str());

        EXPECT_TRUE(FileHelper::read(content));
        EXPECT_EQ(content.size, static_cast<int>(count));
        EXPECT_EQ(dataOf(content), bytes(count));
    }
    EXPECT_EQ(failures(), List{});
}

TEST_F(FileRead, ItReplacesEarlierData)
{
    const std::string path = make("file", "bread");
    FileContent content(path.c_str());
    set(content, "a lot of milk");
    content.nullTerminate = true;

    EXPECT_TRUE(FileHelper::read(content));
    EXPECT_EQ(dataOf(content), "bread");
    EXPECT_TRUE(content.nullTerminate);

    make("file", "more bread");
    EXPECT_TRUE(FileHelper::read(content));
    EXPECT_EQ(dataOf(content), "more bread");
}

TEST_F(FileRead, TheFileIsMeasuredReadInOneGoAndClosedBeforeItsBytesAreCopied)
{
    const std::string path = make("file", bytes(10'000));
    FileContent content(path.c_str());
    Calls::reset();

    FileHelper::read(content);

    EXPECT_EQ(
        Calls::order({"fopen", "fseek", "ftell", "operator new[]", "fread", "fclose"}),
        (List{"fopen", "fseek", "ftell", "fseek", "operator new[]", "fread", "fclose", "operator new[]"}));
    EXPECT_EQ(Calls::of("fopen")[0].arguments, (List{path, "rb"}));
    EXPECT_EQ(Calls::of("fseek")[0].arguments, (List{"0", std::to_string(SEEK_END)}));
    EXPECT_EQ(Calls::of("fseek")[1].arguments, (List{"0", std::to_string(SEEK_SET)}));
    EXPECT_EQ(Calls::of("fread")[0].arguments, (List{"1", "10000"}));
}

TEST_F(FileRead, AnEmptyFileIsReadThoughThereIsNoDataToSet)
{
    const std::string path = make("empty", "");
    FileContent content(path.c_str());

    EXPECT_TRUE(FileHelper::read(content));
    EXPECT_TRUE(isWithoutData(content));
    EXPECT_EQ(failures(), List{"setCopiedData > Data set fail , filepath : " + path});
    EXPECT_TRUE(allAreClosed());
}

TEST_F(FileRead, AnEmptyFileLeavesTheEarlierDataInPlace)
{
    const std::string path = make("empty", "");
    FileContent content(path.c_str());
    set(content, "earlier");

    EXPECT_TRUE(FileHelper::read(content));
    EXPECT_EQ(dataOf(content), "earlier");
    EXPECT_EQ(failures(), List{"setCopiedData > Data set fail , filepath : " + path});
}

TEST_F(FileRead, AFileThatIsNotThereCannotBeOpened)
{
    expectNoFile(file("none"));
    expectNoFile(file("no folder/none"));
    expectNoFile(belowFile());
    expectNoFile(file(std::string(300, 'n')));
    EXPECT_EQ(Calls::count("fclose"), 0U);
}

TEST_F(FileRead, AFileThatMayNotBeReadCannotBeOpened)
{
    const std::string path = make("secret", "bytes");
    chmod(path.c_str(), 0);

    TestSupport::ChildProcess probe({FILE_PROBE, "read", path});

    EXPECT_EQ(probe.wait().status, 1) << probe.errors();
    EXPECT_NE(probe.output().find("] File open fail, path = " + path + "\n"), std::string::npos)
        << probe.output();
}

TEST_F(FileRead, AFolderIsNotReadWhateverItsFileSystemCallsItsLength)
{
    expectNotRead(file(""));
    for (const char* folder : {"/", "/proc", "/sys", "/dev", "/dev/shm"})
        if (fs::is_directory(folder))
            expectNotRead(folder);
}

TEST_F(FileRead, AFileOfTwoGibibytesOrMoreIsNotReadAndCostsNoMemory)
{
    const std::string path = make("large", "");
    for (const std::uintmax_t length : {1ULL << 31, (1ULL << 32) + 1, 5ULL << 30}) {
        fs::resize_file(path, length);
        Calls::reset();
        expectNotRead(path);
        EXPECT_EQ(Calls::count("fread"), 0U);
        EXPECT_EQ(Calls::count("operator new[]"), 1U) << "the earlier data's";
    }
}

TEST_F(FileRead, TheLargestLengthThatIsTriedIsOneByteLess)
{
    const std::string path = make("file", "bytes");
    FileContent content(path.c_str());
    Calls::fail("ftell", INT_MAX);
    Calls::fail("operator new[]", ENOMEM);

    EXPECT_FALSE(FileHelper::read(content));

    ASSERT_EQ(Calls::count("operator new[]"), 1U);
    EXPECT_EQ(Calls::of("operator new[]")[0].arguments, List{"2147483647"});
    EXPECT_EQ(failures(), List{"read > file read fail , path = " + path});
    EXPECT_TRUE(allAreClosed());
}

TEST_F(FileRead, AFileThatShrinksInTheMeantimeIsNotRead)
{
    for (const std::uintmax_t rest : {0U, 1U, 99'999U}) {
        const std::string path = make("shrinking", bytes(100'000));
        Calls::before("fread", [&] { fs::resize_file(path, rest); });
        expectNotRead(path);
    }
}

TEST_F(FileRead, AFileThatGrowsInTheMeantimeIsReadAsItWas)
{
    const std::string path = make("growing", bytes(100'000));
    FileContent content(path.c_str());
    Calls::before("fread", [&] { std::ofstream(path, std::ios::app) << "more"; });

    EXPECT_TRUE(FileHelper::read(content));
    EXPECT_EQ(dataOf(content), bytes(100'000));
}

TEST_F(FileRead, AFileThatIsRemovedInTheMeantimeIsReadAllTheSame)
{
    const std::string path = make("going", bytes(100'000));
    FileContent content(path.c_str());
    Calls::before("fread", [&] { fs::remove(path); });

    EXPECT_TRUE(FileHelper::read(content));
    EXPECT_EQ(dataOf(content), bytes(100'000));
}

TEST_F(FileRead, APipeHasNoLength)
{
    const std::string path = file("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int writer = open(path.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(write(writer, "bytes", 5), 5);

    expectNotRead(path);

    close(writer);
}

TEST_F(FileRead, AFileThatCannotBeMeasuredIsNotRead)
{
    const std::string path = make("file", "bytes");
    Calls::fail("fseek", EIO, 1);
    expectNotRead(path);
    Calls::fail("ftell", -1);
    expectNotRead(path);
    Calls::fail("fseek", EIO, 2);
    expectNotRead(path);
    EXPECT_EQ(Calls::count("fread"), 0U);

    FileContent content(path.c_str());
    EXPECT_TRUE(FileHelper::read(content));
}

TEST_F(FileRead, ADiskThatGivesOnlyAPartIsAFailure)
{
    const std::string path = make("file", "bytes");
    for (const int count : {0, 1, 4}) {
        Calls::fail("fread", count);
        expectNotRead(path);
    }
}

TEST_F(FileRead, WithoutMemoryForTheFileItIsNotRead)
{
    const std::string path = make("file", "bytes");
    Calls::fail("operator new[]", ENOMEM, 2);

    expectNotRead(path);
}

TEST_F(FileRead, WithoutMemoryForTheCopyTheEarlierDataStays)
{
    const std::string path = make("file", "bytes");
    FileContent content(path.c_str());
    set(content, "early");
    Calls::fail("operator new[]", ENOMEM, 2);

    EXPECT_FALSE(FileHelper::read(content));
    EXPECT_EQ(dataOf(content), "early");
    EXPECT_EQ(failures(), List{"setCopiedData > Data set fail , filepath : " + path});
    EXPECT_TRUE(allAreClosed());
}

TEST_F(FileRead, NamesWithBlanksAndKoreanLettersAreNames)
{
    for (const std::string name : {" a b ", "우유.bin", "100%s", "line\nfeed", "-rf"}) {
        const std::string path = make(name, name);
        FileContent content(path.c_str());
        EXPECT_TRUE(FileHelper::read(content)) << name;
        EXPECT_EQ(dataOf(content), name);
    }
    expectNoFile(file("우유 100%s"));
}
