// Sees what GLib complains about.
#pragma once

#include <glib.h>
#include <gtest/gtest.h>

#include <string>

/**
 * While it lives, a warning or critical of GLib fails the test: on the appliance it would be a line on
 * standard error, or the end of the process. The messages must come on the test's own thread.
 */
class GLibWatch {
  public:
    GLibWatch() : previous_(g_log_set_default_handler(note, this)) {}
    ~GLibWatch()
    {
        g_log_set_default_handler(previous_, nullptr);
        EXPECT_EQ(messages_, "");
    }
    GLibWatch(const GLibWatch&) = delete;
    GLibWatch& operator=(const GLibWatch&) = delete;

    /** What was said until now; it is forgotten. */
    std::string take() { return std::exchange(messages_, ""); }

  private:
    static void note(const gchar* domain, GLogLevelFlags, const gchar* message, gpointer self)
    {
        static_cast<GLibWatch*>(self)->messages_ += std::string(domain ? domain : "") + ": " + message + "\n";
    }

    GLogFunc previous_;
    std::string messages_;
};
