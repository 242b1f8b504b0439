// A path, and bytes that belong to whoever holds them.
#include <cerrno>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "FileFixture.h"

using TestSupport::Calls;
using Util::FileContent;

namespace {

static_assert(std::has_virtual_destructor_v<FileContent>);
static_assert(!std::is_copy_constructible_v<FileContent> && !std::is_copy_assignable_v<FileContent>);
static_assert(std::is_same_v<decltype(FileContent::size), std::int32_t>);
static_assert(!std::is_polymorphic_v<Util::FileHelper> && std::is_empty_v<Util::FileHelper>);

class FileContentTest : public FileTest {};

struct Kind : FileContent {
    explicit Kind(bool* isGone) : FileContent("kind"), isGone_(isGone) {}
    ~Kind() override { *isGone_ = true; }

  private:
    bool* isGone_;
};

}  // namespace

TEST_F(FileContentTest, AFreshOneHasItsPathAndNothingElse)
{
    const FileContent content("/some/where.bin");

    EXPECT_EQ(content.path, "/some/where.bin");
    EXPECT_EQ(content.size, 0);
    EXPECT_EQ(content.data, nullptr);
    EXPECT_FALSE(content.nullTerminate);
    EXPECT_EQ(failures(), List{});
}

TEST_F(FileContentTest, TheFieldsStandInTheirOrder)
{
    const FileContent content("file");
    const auto place = [](const auto& field) { return reinterpret_cast<std::uintptr_t>(&field); };

    EXPECT_LT(place(content.path), place(content.size));
    EXPECT_LT(place(content.size), place(content.data));
    EXPECT_LT(place(content.data), place(content.nullTerminate));
}

TEST_F(FileContentTest, ThePathIsACopy)
{
    char path[] = "/some/where.bin";
    const FileContent content(path);

    path[1] = 'X';

    EXPECT_EQ(content.path, "/some/where.bin");
}

TEST_F(FileContentTest, OneWithoutAPathHasTheEmptyOne)
{
    FileContent content(nullptr);
    EXPECT_EQ(content.path, "");

    set(content, "bytes");
    EXPECT_FALSE(Util::FileHelper::write(content));
    EXPECT_FALSE(Util::FileHelper::read(content));
    EXPECT_FALSE(Util::FileHelper::remove(content));
    EXPECT_EQ(failures(), (List{"write > file open error",
                                "read > File open fail, path = ", "remove > failed to delete file : "}));
}

TEST_F(FileContentTest, TheDataIsACopyOfEveryByte)
{
    std::string given("\0a\0\xFF\n\0", 6);
    FileContent content("file");

    content.setCopiedData(given.data(), 6);
    given.assign(6, 'X');

    EXPECT_NE(content.data, given.data());
    EXPECT_EQ(content.size, 6);
    EXPECT_EQ(dataOf(content), std::string("\0a\0\xFF\n\0", 6));
    EXPECT_EQ(failures(), List{});
}

TEST_F(FileContentTest, AsManyBytesAreCopiedAsTheCallerSays)
{
    FileContent content("file");

    content.setCopiedData("milk and bread", 4);

    EXPECT_EQ(dataOf(content), "milk");
}

TEST_F(FileContentTest, LaterDataReplacesEarlierData)
{
    FileContent content("file");

    for (const size_t count : {100U, 1U, 100'000U, 100'000U, 7U}) {
        set(content, bytes(count));
        EXPECT_EQ(dataOf(content), bytes(count));
    }
    EXPECT_FALSE(content.nullTerminate);
}

TEST_F(FileContentTest, BytesThatAreNoneAreRefused)
{
    FileContent content("/some/where.bin");
    const std::string refused = "setCopiedData > Data set fail , filepath : /some/where.bin";

    content.setCopiedData(nullptr, 5);
    content.setCopiedData("bytes", 0);
    content.setCopiedData("bytes", -1);
    content.setCopiedData("bytes", INT_MIN);
    content.setCopiedData(nullptr, 0);

    EXPECT_TRUE(isWithoutData(content));
    EXPECT_EQ(failures(), List(5, refused));
    EXPECT_EQ(Calls::count("operator new[]"), 0U);
}

TEST_F(FileContentTest, WhatIsRefusedLeavesTheEarlierDataInPlace)
{
    FileContent content("file");
    set(content, "milk");
    const char* const before = content.data;

    content.setCopiedData(nullptr, 5);
    content.setCopiedData("bytes", 0);
    content.setCopiedData("bytes", -3);
    Calls::fail("operator new[]", ENOMEM);
    content.setCopiedData("bytes", 5);

    EXPECT_EQ(content.data, before);
    EXPECT_EQ(dataOf(content), "milk");
    EXPECT_EQ(failures(), List(4, "setCopiedData > Data set fail , filepath : file"));
}

TEST_F(FileContentTest, ItsOwnBytesMayBeSet)
{
    FileContent content("file");
    set(content, "milk and bread");

    content.setCopiedData(content.data, content.size);
    EXPECT_EQ(dataOf(content), "milk and bread");
    content.setCopiedData(content.data + 9, 5);
    EXPECT_EQ(dataOf(content), "bread");
    content.setCopiedData(content.data, 1);
    EXPECT_EQ(dataOf(content), "b");
    EXPECT_EQ(failures(), List{});
}

TEST_F(FileContentTest, APathWithAPercentSignIsLoggedAsItStands)
{
    FileContent content("/some/100%s%n");

    content.setCopiedData(nullptr, 1);

    EXPECT_EQ(failures(), List{"setCopiedData > Data set fail , filepath : /some/100%s%n"});
}

TEST_F(FileContentTest, WhatIsDerivedFromItEndsThroughIt)
{
    bool isGone = false;
    std::unique_ptr<FileContent> content = std::make_unique<Kind>(&isGone);
    set(*content, "bytes");

    content.reset();

    EXPECT_TRUE(isGone);
}
