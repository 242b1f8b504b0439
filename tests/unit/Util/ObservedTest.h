// A test that starts and ends with nothing noted and no fault set.
#pragma once

#include <dlog.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Calls.h"

using List = std::vector<std::string>;

class ObservedTest : public testing::Test {
  protected:
    ObservedTest() { TestSupport::Calls::reset(); }
    ~ObservedTest() override { TestSupport::Calls::reset(); }

    /** The errors logged so far, as "File.cpp: function(line) > message"; another level is marked as such. */
    static List errors()
    {
        List texts;
        for (const TestSupport::LogEntry& entry : TestSupport::Calls::log())
            texts.push_back((entry.priority == DLOG_ERROR ? "" : "no error: ") + plain(entry));
        return texts;
    }

    /** The same without file, function and line. */
    static List errorMessages()
    {
        List texts;
        for (const std::string& text : errors())
            texts.push_back(text.substr(text.find(" > ") + 3));
        return texts;
    }

  private:
    // Between "[thread] " and the colour's reset.
    static std::string plain(const TestSupport::LogEntry& entry)
    {
        const std::string start = "[" + std::to_string(entry.thread) + "] ";
        const std::string reset = "\033[0m";
        const size_t from = entry.text.find(start) + start.size();
        return entry.text.substr(from, entry.text.size() - reset.size() - from);
    }
};
