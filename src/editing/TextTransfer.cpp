#include "editing/TextTransfer.h"

#include <QtCore/QStringList>
#include <QtGui/QTextDocumentFragment>

namespace Tessaline {

namespace {

const QString kPlainText = QStringLiteral("text/plain");

} // namespace

bool hasPlainText(const QMimeData &transfer)
{
    return transfer.hasText() || transfer.hasHtml();
}

QString plainTextOf(const QMimeData &transfer)
{
    if (transfer.hasText())
        return transfer.text();
    QString text = QTextDocumentFragment::fromHtml(transfer.html()).toPlainText();
    return text.remove(QChar(QChar::ObjectReplacementCharacter)); // stands for pictures
}

TextTransfer::TextTransfer(ChunkedText text, const TextRange &range) : m_text(std::move(text)), m_range(range) {}

QStringList TextTransfer::formats() const
{
    return {kPlainText};
}

bool TextTransfer::hasFormat(const QString &mimeType) const
{
    return mimeType == kPlainText;
}

QVariant TextTransfer::retrieveData(const QString &mimeType, QMetaType type) const
{
    if (!hasFormat(mimeType))
        return QMimeData::retrieveData(mimeType, type);
    const QString text = m_text.sliced(m_range.location, m_range.length);
    return type.id() == QMetaType::QByteArray ? QVariant(text.toUtf8()) : QVariant(text);
}

} // namespace Tessaline
