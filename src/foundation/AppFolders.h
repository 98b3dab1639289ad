#pragma once

#include "foundation/FileURL.h"

namespace Tessaline {

/// Where the application keeps its own files. A test hands in folders of its own.
struct AppFolders {
    FileURL configuration; // preferences
    FileURL data;          // sessions, the server's log
    FileURL cache;         // images

    /// The user's real folders: `$XDG_CONFIG_HOME`, `$XDG_DATA_HOME` and `$XDG_CACHE_HOME` (or what the system has in
    /// their place), each with a folder named `identifier`. Nothing is created.
    static AppFolders ofUser(const QString &identifier);
};

} // namespace Tessaline
