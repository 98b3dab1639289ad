#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

/// The rules of the excerpts in their plainest and slowest form, which the fast one must equal.
namespace Tessaline::PlainExcerpts {

QStringList splitIntoChunks(const QString &text, qint64 size, qint64 overlap);
qsizetype tokenHits(const QStringList &tokens, const QString &text);
QString bestExcerpt(const QString &content, const QStringList &tokens);

} // namespace Tessaline::PlainExcerpts
