// Files that are written whole and removed, and disks that do not play along.
#include <sys/stat.h>

#include <cerrno>
#include <thread>

#include "ChildProcess.h"
#include "FileFixture.h"

using TestSupport::Calls;
using TestSupport::ChildProcess;
using Util::FileContent;
using Util::FileHelper;

namespace fs = std::filesystem;

namespace {

class FileWrite : public FileTest {
  protected:
    static bool write(const std::string& path, const std::string& data)
    {
        FileContent content(path.c_str());
        set(content, data);
        return FileHelper::write(content);
    }

    static void expectNotOpened(const std::string& path)
    {
        Calls::reset();
        EXPECT_FALSE(write(path, "bytes")) << path;
        EXPECT_EQ(failures(), List{"write > file open error"}) << path;
        EXPECT_EQ(Calls::order({"fwrite", "fclose", "sync"}), List{}) << path;
    }
};

class FileRemove : public FileTest {
  protected:
    static void expectNotRemoved(const std::string& path)
    {
        Calls::reset();
        FileContent content(path.c_str());
        set(content, "milk");
        EXPECT_FALSE(FileHelper::remove(content)) << path;
        EXPECT_EQ(failures(), List{"remove > failed to delete file : " + path});
        EXPECT_EQ(std::string(content.data, static_cast<size_t>(content.size)), "milk");
    }
};

// What it says on standard output; it must end with that status.
std::string probe(const List& arguments, int status)
{
    List command = {FILE_PROBE};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildProcess process(command);
    EXPECT_EQ(process.wait().status, status) << process.errors();
    return process.output();
}

}  // namespace

TEST_F(FileWrite, TheDataBecomesTheWholeFile)
{
    for (const size_t count : {1U, 5000U, 1'000'000U, 3U}) {
        EXPECT_TRUE(write(file(), bytes(count)));
        EXPECT_EQ(bytesOf(file()), bytes(count));
    }
    EXPECT_EQ(failures(), List{});
}

TEST_F(FileWrite, TheDataIsOneBlockThatIsClosedAndThenOnTheDisk)
{
    size_t lengthAtSync = 0;
    Calls::before("sync", [&] { lengthAtSync = fs::file_size(file()); });

    EXPECT_TRUE(write(file(), "milk"));

    EXPECT_EQ(Calls::order({"fopen", "fwrite", "fclose", "sync"}),
              (List{"fopen", "fwrite", "fclose", "sync"}));
    EXPECT_EQ(Calls::of("fopen")[0].arguments, (List{file(), "wb"}));
    EXPECT_EQ(Calls::of("fwrite")[0].arguments, (List{"1", "4"}));
    EXPECT_EQ(lengthAtSync, 4U);
}

TEST_F(FileWrite, AZeroByteFollowsWhereItIsAskedFor)
{
    FileContent content(file().c_str());
    set(content, "milk");
    content.nullTerminate = true;

    EXPECT_TRUE(FileHelper::write(content));
    EXPECT_EQ(bytesOf(file()), std::string("milk\0", 5));
    EXPECT_EQ(dataOf(content), "milk");
    EXPECT_EQ(Calls::order({"fwrite", "fclose", "sync"}), (List{"fwrite", "fwrite", "fclose", "sync"}));

    EXPECT_TRUE(FileHelper::read(content));
    EXPECT_EQ(content.size, 5);
    EXPECT_EQ(dataOf(content), std::string("milk\0", 5));
}

TEST_F(FileWrite, TheContentIsAsItWas)
{
    FileContent content(file().c_str());
    set(content, "milk");
    const char* const before = content.data;

    FileHelper::write(content);

    EXPECT_EQ(content.data, before);
    EXPECT_EQ(dataOf(content), "milk");
}

TEST_F(FileWrite, WithoutDataNoFileIsMade)
{
    FileContent content(file().c_str());
    content.nullTerminate = true;

    EXPECT_FALSE(FileHelper::write(content));
    EXPECT_FALSE(fs::exists(file()));
    EXPECT_EQ(failures(), List{"write > Data is not set"});
    EXPECT_EQ(Calls::order({"fopen", "sync"}), List{});
}

TEST_F(FileWrite, WithoutDataTheFileThatIsThereStays)
{
    make("file", "bytes");
    FileContent content(file().c_str());

    EXPECT_FALSE(FileHelper::write(content));
    EXPECT_EQ(bytesOf(file()), "bytes");
}

TEST_F(FileWrite, WhereNothingCanBeMadeNothingIsWritten)
{
    expectNotOpened(belowFile());
    expectNotOpened(file("no folder/file"));
    expectNotOpened(file(""));
    expectNotOpened(file(std::string(300, 'n')));
    expectNotOpened("/proc/carvoy/file");
    expectNotOpened("");
}

TEST_F(FileWrite, AFailureToOpenLeavesTheFileThatIsThere)
{
    make("file", "bytes");
    FileContent content(file().c_str());
    set(content, "milk");

    for (const int code : {EROFS, EACCES, ENOSPC, EMFILE}) {
        Calls::fail("fopen", code);
        EXPECT_FALSE(FileHelper::write(content));
    }
    EXPECT_EQ(failures(), List(4, "write > file open error"));
    EXPECT_EQ(bytesOf(file()), "bytes");
    EXPECT_EQ(std::string(content.data, static_cast<size_t>(content.size)), "milk");
}

TEST_F(FileWrite, AReadOnlyFolderTakesNoFile)
{
    fs::create_directory(file("folder"));
    chmod(file("folder").c_str(), 0555);

    const std::string output = probe({"write", file("folder/file")}, 1);
    chmod(file("folder").c_str(), 0755);

    EXPECT_NE(output.find("] file open error\n"), std::string::npos) << output;
    EXPECT_TRUE(fs::is_empty(file("folder")));
}

TEST_F(FileWrite, AFullDiskKeepsThePartThatWentOntoIt)
{
    const std::string output = probe({"write", file(), "65536"}, 0);

    EXPECT_EQ(output, "");
    EXPECT_EQ(bytesOf(file()), std::string(65'536, 'x'));
}

TEST_F(FileWrite, ADiskWithoutAnyRoomIsNotNoticed)
{
    EXPECT_TRUE(write("/dev/full", "milk"));
    EXPECT_TRUE(write("/dev/full", bytes(100'000)));

    EXPECT_EQ(failures(), List{});
    EXPECT_EQ(Calls::order({"fclose", "sync"}), (List{"fclose", "sync", "fclose", "sync"}));
}

TEST_F(FileWrite, AShortWriteIsNotNoticed)
{
    FileContent content(file().c_str());
    set(content, "milk");
    content.nullTerminate = true;
    Calls::fail("fwrite", 3);
    Calls::fail("fwrite", 0, 2);
    Calls::fail("fclose", EIO);

    EXPECT_TRUE(FileHelper::write(content));
    EXPECT_EQ(Calls::count("sync"), 1U);
    EXPECT_EQ(failures(), List{});
}

TEST_F(FileWrite, NamesWithBlanksAndKoreanLettersAreNames)
{
    for (const std::string name : {" a b ", "우유.bin", "100%s", "line\nfeed", "-rf"}) {
        EXPECT_TRUE(write(file(name), name)) << name;
        EXPECT_EQ(bytesOf(file(name)), name);
        FileContent content(file(name).c_str());
        EXPECT_TRUE(FileHelper::remove(content)) << name;
        EXPECT_FALSE(fs::exists(file(name))) << name;
    }
}

TEST_F(FileWrite, WhatIsWrittenIsWhatIsRead)
{
    FileContent written(file().c_str());
    set(written, bytes(300'000));
    FileContent read(file().c_str());

    EXPECT_TRUE(FileHelper::write(written));
    EXPECT_TRUE(FileHelper::read(read));
    EXPECT_EQ(dataOf(read), dataOf(written));
}

TEST_F(FileWrite, ThreadsWriteAndReadFilesOfTheirOwn)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([path = file(std::to_string(i)), data = bytes(10'000U + i)] {
            FileContent content(path.c_str());
            set(content, data);
            EXPECT_TRUE(FileHelper::write(content));
            EXPECT_TRUE(FileHelper::read(content));
            EXPECT_EQ(dataOf(content), data);
            EXPECT_TRUE(FileHelper::remove(content));
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures(), List{});
}

TEST_F(FileRemove, TheFileIsGoneAndTheDataStays)
{
    const std::string path = make("file", "bytes");
    FileContent content(path.c_str());
    set(content, "milk");

    EXPECT_TRUE(FileHelper::remove(content));
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(dataOf(content), "milk");
    ASSERT_EQ(Calls::count("unlink"), 1U);
    EXPECT_EQ(Calls::of("unlink")[0].arguments, List{path});
    EXPECT_EQ(failures(), List{});
}

TEST_F(FileRemove, OneThatIsNotThereIsAFailure)
{
    expectNotRemoved(file("none"));
    expectNotRemoved(belowFile());
    expectNotRemoved("");
}

TEST_F(FileRemove, ItIsRemovedOnce)
{
    FileContent content(make("file", "bytes").c_str());

    EXPECT_TRUE(FileHelper::remove(content));
    EXPECT_FALSE(FileHelper::remove(content));
}

TEST_F(FileRemove, AFolderIsNoFile)
{
    fs::create_directory(file("folder"));

    expectNotRemoved(file("folder"));
    EXPECT_TRUE(fs::is_directory(file("folder")));
}

TEST_F(FileRemove, ALinkGoesAndWhatItLeadsToStays)
{
    make("file", "bytes");
    fs::create_symlink(file(), file("link"));
    FileContent content(file("link").c_str());

    EXPECT_TRUE(FileHelper::remove(content));
    EXPECT_FALSE(fs::is_symlink(file("link")));
    EXPECT_EQ(bytesOf(file()), "bytes");
}

TEST_F(FileRemove, AReadOnlyFolderKeepsItsFiles)
{
    fs::create_directory(file("folder"));
    const std::string path = make("folder/file", "bytes");
    chmod(file("folder").c_str(), 0555);

    const std::string output = probe({"remove", path}, 1);
    chmod(file("folder").c_str(), 0755);

    EXPECT_NE(output.find("] failed to delete file : " + path + "\n"), std::string::npos) << output;
    EXPECT_EQ(bytesOf(path), "bytes");
}
