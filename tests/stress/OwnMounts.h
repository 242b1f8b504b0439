// Mounts that only this process and its children see, so that a test can have disks of its own.
#pragma once

#include <string>

namespace ServiceTest {

/**
 * To be called first in main(). Runs the program anew where it may mount, as root or in a user namespace;
 * returns where it does already, and where the system lets it do neither.
 */
void enterOwnMounts(char** argv);

/** Why this process cannot mount; empty where it can. */
std::string whyNoMounts();

}  // namespace ServiceTest
