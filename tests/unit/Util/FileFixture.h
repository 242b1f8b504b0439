// A folder for the files of a test, and what the file helper left and said.
#pragma once

#include <climits>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "FileHelper.h"
#include "ObservedTest.h"
#include "ScratchRoot.h"

class FileTest : public ObservedTest {
  protected:
    FileTest()
    {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directory(folder_);
    }

    std::string file(const std::string& name = "file") const { return folder_ + "/" + name; }

    /** A path whose parent is a file: nothing can be made there, whoever asks. */
    std::string belowFile() const
    {
        make("parent", "a file");
        return file("parent/child");
    }

    /** Makes a file with these bytes, and returns its path. */
    std::string make(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(file(name), std::ios::binary) << bytes;
        return file(name);
    }

    static std::string bytesOf(const std::string& path)
    {
        std::ifstream stream(path, std::ios::binary);
        std::ostringstream bytes;
        bytes << stream.rdbuf();
        return bytes.str();
    }

    /** Every byte there is, over and over. */
    static std::string bytes(size_t count)
    {
        std::string text(count, '\0');
        for (size_t i = 0; i < count; ++i)
            text[i] = static_cast<char>(i % 251);
        return text;
    }

    static void set(Util::FileContent& content, const std::string& data)
    {
        content.setCopiedData(data.data(), static_cast<int>(data.size()));
    }

    static std::string dataOf(const Util::FileContent& content)
    {
        return std::string(content.data ? content.data : "", static_cast<size_t>(content.size));
    }

    static bool isWithoutData(const Util::FileContent& content)
    {
        return content.data == nullptr && content.size == 0;
    }

    /** The errors so far as "function > message"; all of them must stand in the file helper's source. */
    static List failures()
    {
        List texts;
        for (const std::string& text : errors()) {
            const std::string source = "FileHelper.cpp: ";
            EXPECT_EQ(text.substr(0, source.size()), source);
            const size_t line = text.find('(');
            texts.push_back(text.substr(source.size(), line - source.size()) + text.substr(text.find(" > ")));
        }
        return texts;
    }

    /** True if as many files were closed as were opened. */
    static bool allAreClosed()
    {
        return TestSupport::Calls::count("fopen") == TestSupport::Calls::count("fclose");
    }

  private:
    const std::string folder_ = TestSupport::ScratchRoot::file("files");
};
