#include "foundation_ui/PlainToolTip.h"

#include <QtGui/QTextDocument>

namespace Tessaline {

QString plainToolTip(const QString &text)
{
    return Qt::mightBeRichText(text) ? QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped()) : text;
}

} // namespace Tessaline
