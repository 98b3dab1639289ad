#include "editing/FormattedTransfer.h"

#include "editing/FormattedHtml.h"
#include "editing/InlineWriting.h"
#include "editing/MarkdownWriting.h"
#include "editing/TextBoundaries.h"

#include <QtCore/QDataStream>
#include <QtCore/QIODevice>
#include <QtCore/QStringList>

namespace Tessaline {

namespace {

const QString kPlain = QStringLiteral("text/plain");
const QString kHtml = QStringLiteral("text/html");
const QString kMarkdown = QStringLiteral("text/markdown");
const QString kAttributed = QStringLiteral("application/x-tessaline-attributed-text");
constexpr quint32 kVersion = 1;

/// A null text is an absent one; an empty one is not null.
QString optionalText(const SharedText &text)
{
    const QString characters = text.toString();
    return text.isPresent() && characters.isNull() ? QStringLiteral("") : characters;
}

SharedText sharedText(const QString &text)
{
    return text.isNull() ? SharedText() : SharedText(text);
}

QByteArray encoded(const AttributedText &text)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    stream << kVersion << text.text() << static_cast<quint32>(text.runs().size());
    for (const AttributeRun &run : text.runs()) {
        const TextAttributes &a = run.attributes;
        stream << static_cast<qint64>(run.range.length) << a.bold << a.italic << a.inlineCode << a.generatedMarker
               << optionalText(a.blockStyle) << optionalText(a.linkDestination) << optionalText(a.imageSource)
               << optionalText(a.imageAlt);
    }
    return bytes;
}

std::optional<AttributedText> decoded(const QByteArray &bytes)
{
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_0);
    quint32 version = 0;
    QString text;
    quint32 runs = 0;
    stream >> version >> text >> runs;
    AttributedText result;
    for (quint32 i = 0; i < runs && version == kVersion && stream.status() == QDataStream::Ok; ++i) {
        qint64 length = 0;
        TextAttributes a;
        QString blockStyle;
        QString linkDestination;
        QString imageSource;
        QString imageAlt;
        stream >> length >> a.bold >> a.italic >> a.inlineCode >> a.generatedMarker >> blockStyle >> linkDestination >>
            imageSource >> imageAlt;
        if (length <= 0 || length > text.size() - result.size())
            return std::nullopt;
        a.blockStyle = sharedText(blockStyle);
        a.linkDestination = sharedText(linkDestination);
        a.imageSource = sharedText(imageSource);
        a.imageAlt = sharedText(imageAlt);
        result.append(QStringView(text).sliced(result.size(), length), a);
    }
    const bool isWhole = stream.status() == QDataStream::Ok && stream.atEnd() && result.size() == text.size();
    return isWhole && !text.isEmpty() ? std::optional(result) : std::nullopt;
}

} // namespace

FormattedTransfer::FormattedTransfer(AttributedDocument document, const TextRange &range)
    : m_document(std::move(document)), m_range(range)
{}

std::optional<AttributedText> FormattedTransfer::attributedText(const QMimeData &transfer)
{
    return transfer.hasFormat(kAttributed) ? decoded(transfer.data(kAttributed)) : std::nullopt;
}

QStringList FormattedTransfer::formats() const
{
    return {kPlain, kHtml, kMarkdown, kAttributed};
}

bool FormattedTransfer::hasFormat(const QString &mimeType) const
{
    return formats().contains(mimeType);
}

/// A part of one paragraph is a piece of a line; from a whole paragraph on it is a document of its own.
QString FormattedTransfer::markdownOf(const AttributedText &text) const
{
    const TextRange content = TextBoundaries::paragraphContentAt(m_document.text(), m_range.location);
    const bool isPart = m_range.end() <= content.end() && m_range != content;
    return isPart ? serializeInline(text, {0, text.size()}) : serializeMarkdown(text);
}

QVariant FormattedTransfer::retrieveData(const QString &mimeType, QMetaType type) const
{
    if (!hasFormat(mimeType))
        return QMimeData::retrieveData(mimeType, type);
    const AttributedText text = m_document.sliced(m_range);
    if (mimeType == kAttributed)
        return encoded(text);
    const QString form = mimeType == kHtml       ? htmlOf(text)
                         : mimeType == kMarkdown ? markdownOf(text)
                                                 : plainText(text, {0, text.size()});
    return type.id() == QMetaType::QByteArray ? QVariant(form.toUtf8()) : QVariant(form);
}

} // namespace Tessaline
