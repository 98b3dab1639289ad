#include "Services/ServerCandidates.h"

#include <QtCore/QStringList>

namespace Tessaline {

using namespace Qt::StringLiterals;

QList<FileURL> serverCandidates(const FileURL &executableFolder)
{
    constexpr QStringView kName = u"tessaline-server";
    const FileURL sourceTree(QStringLiteral(TESSALINE_SOURCE_TREE));
    return {
        executableFolder.appending(kName),
        executableFolder.deletingLastPathComponent().appending(u"lib/tessaline").appending(kName),
        sourceTree.appending(u"target/release").appending(kName),
        sourceTree.appending(u"target/debug").appending(kName),
    };
}

QString printedCandidates(const QList<FileURL> &candidates)
{
    QStringList paths;
    for (const FileURL &candidate : candidates)
        paths.append(u"\"%1\""_s.arg(candidate.path()));
    return u"[%1]"_s.arg(paths.join(u", "_s));
}

} // namespace Tessaline
