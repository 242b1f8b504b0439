// Where a download comes from and goes to.
#pragma once

#include <string>

namespace HostPlatform {

/** What an app asked for; empty where it said nothing. */
struct DownloadOrder {
    std::string url;
    std::string folder;  // absolute
    std::string name;
};

/** An address of http or https. Throws std::bad_alloc. */
bool isWebAddress(const char* text);

/** An absolute path of a folder that exists. */
bool isFolder(const char* path);

/** A name that a file can have in any folder, and that leads to no other one. */
bool isFileName(const char* name);

/** The folder of the order; by default that of the user's downloads, which is made. */
std::string folderOf(const DownloadOrder& order);

/** The name of the order; by default what the address ends with, if that can be a name. */
std::string nameOf(const DownloadOrder& order);

}  // namespace HostPlatform
