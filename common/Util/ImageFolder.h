// The service's temporary folder of downloaded pictures, and what the files in it are called.
#pragma once

#include <cstddef>
#include <string>

namespace Util {

/** As much of a name, a path or a command, in bytes, as everybody who reads them can hold. */
constexpr size_t MAX_IMAGE_TEXT = 127;

/** The folder, an absolute path: one for the process, whoever downloads. Empty where the platform has none.
 */
const std::string& imageFolder();

/** Makes the folder, if it is not there. */
void makeImageFolder();

/** True where a link is in the folder's place: what it leads to is not the service's. */
bool isImageFolderLink();

/**
 * Removes the folder and all that is in it; of a link, the link. Returns the status of the shell that did
 * it, or -1 where the folder's path cannot be given to a shell.
 */
int removeImageFolder();

/**
 * The id in decimal, a dot, and the kind of picture that the address names; where it names none, what follows
 * its last dot, uncleaned. Cut to 127 bytes.
 */
std::string imageFileName(int id, const std::string& url);

}  // namespace Util
