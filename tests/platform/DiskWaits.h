// How often SQLite waits for the disk.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <map>
#include <utility>

/**
 * Stands between SQLite and its files while it lives, and counts the syncs of the files that are opened
 * meanwhile. One thread, one object at a time.
 */
class DiskWaits {
  public:
    DiskWaits()
    {
        real = sqlite3_vfs_find(nullptr);
        own = *real;
        own.zName = "counts-syncs";
        own.xOpen = open;
        count = 0;
        EXPECT_EQ(sqlite3_vfs_register(&own, 1), SQLITE_OK);
    }
    ~DiskWaits()
    {
        EXPECT_EQ(sqlite3_vfs_unregister(&own), SQLITE_OK);
        EXPECT_EQ(sqlite3_vfs_register(real, 1), SQLITE_OK);
    }
    DiskWaits(const DiskWaits&) = delete;
    DiskWaits& operator=(const DiskWaits&) = delete;

    /** Since the last time that it was asked. */
    static int take() { return std::exchange(count, 0); }

  private:
    // The files of one system share one way to sync; the rest of their methods differs.
    static int open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags)
    {
        const int result = real->xOpen(real, name, file, flags, outFlags);
        if (result != SQLITE_OK || !file->pMethods)
            return result;
        sqlite3_io_methods& counted = methods[file->pMethods];
        counted = *file->pMethods;
        realSync = counted.xSync;
        counted.xSync = sync;
        file->pMethods = &counted;
        return result;
    }

    static int sync(sqlite3_file* file, int flags)
    {
        ++count;
        return realSync(file, flags);
    }

    static inline sqlite3_vfs* real = nullptr;
    static inline sqlite3_vfs own{};
    static inline std::map<const sqlite3_io_methods*, sqlite3_io_methods>
        methods;  // by those they are made of
    static inline int (*realSync)(sqlite3_file*, int) = nullptr;
    static inline int count = 0;
};
