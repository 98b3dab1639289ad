#pragma once

#include "editing/AttributedDocument.h"

#include <QtCore/QMimeData>

#include <optional>

namespace Tessaline {

/// A stretch of a formatted text for the clipboard or a drag: its content as plain text and as HTML, its Markdown
/// (inline Markdown of a part of one paragraph), and, for another formatted editor, the text with its attributes. It
/// keeps a snapshot and makes each form when somebody asks.
class FormattedTransfer final : public QMimeData
{
    Q_OBJECT
public:
    FormattedTransfer(AttributedDocument document, const TextRange &range);

    /// The text with its attributes, if `transfer` carries one. What only looks like it is not taken.
    static std::optional<AttributedText> attributedText(const QMimeData &transfer);

    QStringList formats() const override;
    bool hasFormat(const QString &mimeType) const override;

protected:
    QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    QString markdownOf(const AttributedText &text) const;

    AttributedDocument m_document;
    TextRange m_range;
};

} // namespace Tessaline
