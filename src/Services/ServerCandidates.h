#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QList>

namespace Tessaline {

/// Where `tessaline-server` may be, in the order in which it is looked for: beside the executable in
/// `executableFolder`; among the application's resources, which an installation has in `../lib/tessaline`; and in
/// `target/release` and `target/debug` of the source tree that this was built from, for those who build both.
QList<FileURL> serverCandidates(const FileURL &executableFolder);

/// The paths as the console shows them: ["/a", "/b"].
QString printedCandidates(const QList<FileURL> &candidates);

} // namespace Tessaline
