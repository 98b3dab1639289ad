#pragma once

#include "foundation/ChunkedText.h"
#include "foundation/TextRange.h"

#include <QtCore/QMimeData>

namespace Tessaline {

/// Whether a transfer has characters to put into a text, and these: its plain text, or if it has HTML alone what that
/// shows.
bool hasPlainText(const QMimeData &transfer);
QString plainTextOf(const QMimeData &transfer);

/// A stretch of a text for the clipboard or a drag. It keeps a snapshot of the text and makes the characters only when
/// somebody asks, so that selecting or copying ten megabytes costs nothing until they are pasted.
class TextTransfer final : public QMimeData
{
    Q_OBJECT
public:
    TextTransfer(ChunkedText text, const TextRange &range);

    QStringList formats() const override;
    bool hasFormat(const QString &mimeType) const override;

protected:
    QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    ChunkedText m_text;
    TextRange m_range;
};

} // namespace Tessaline
