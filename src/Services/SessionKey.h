#pragma once

#include <QtCore/QString>

namespace Tessaline {

/// The name of the folder that holds the session of the document at `path`: 16 lower-case hexadecimal digits, a hash of
/// the path's UTF-8 bytes (h = 33 h + byte from 5381 on, in 64 bits). The path is taken as it is given: links and other
/// spellings are the caller's to resolve, and two Unicode forms of one name have two keys.
QString sessionKey(const QString &path);

} // namespace Tessaline
