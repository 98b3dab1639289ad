#pragma once

#include <functional>

namespace Tessaline {

/// Runs `body` in a process of its own that permission bits do stop, also where the tests run as root, and returns what
/// it returned (0 to 255); -1 if it crashed. What it prints goes where the test prints. What it is to reach must be
/// open to everybody: see `letEverybodyIn`.
int runWithoutPrivileges(const std::function<int()> &body);

/// Opens a folder of the test, which only its owner can enter otherwise, to all users.
void letEverybodyIn(const char *folder);

} // namespace Tessaline
