#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QByteArrayView>

/// Files that nobody but their user may read or write, whatever the process's file mode mask allows: mode 0600 in
/// folders of mode 0700. For what is best-effort, so a failure is a plain false. All of them block and are safe from
/// any thread.
namespace Tessaline {

/// Makes the folder and those above it that are missing, all of them private. What is there already keeps its mode.
/// True if the folder is there afterwards.
bool makePrivateFolder(const FileURL &url);

/// Gives the file these bytes and mode 0600, making it if it is missing. A plain write in place: another reader can see
/// it half-way, and a crash can leave it cut off. Where it fails for want of permission or of space, the file is as it
/// was. Only an ordinary file is written, or one that a link leads to.
bool writePrivateFile(const FileURL &url, QByteArrayView bytes);

/// Adds these bytes to the end of the file, in the same way.
bool appendToPrivateFile(const FileURL &url, QByteArrayView bytes);

} // namespace Tessaline
