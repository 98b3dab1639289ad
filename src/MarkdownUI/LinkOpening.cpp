#include "MarkdownUI/LinkOpening.h"

#include "foundation_ui/LinkQuestion.h"

#include <QtGui/QDesktopServices>

namespace MarkdownUI {

using namespace Qt::StringLiterals;

QString shownTarget(const QUrl &url)
{
    QString shown;
    for (const uint codePoint : url.toString().toUcs4()) {
        const char32_t character = codePoint;
        const QString text = QString::fromUcs4(&character, 1);
        const QChar::Category category = QChar::category(codePoint);
        const bool isSeen = category != QChar::Other_Format && category != QChar::Other_Control &&
                            category != QChar::Other_NotAssigned && !QChar::isSpace(codePoint);
        shown.append(isSeen ? text : QString::fromLatin1(QUrl::toPercentEncoding(text)));
    }
    return shown;
}

void openWithCare(const QUrl &url, QWidget *parent, const OpenURL &outside)
{
    const QString scheme = url.scheme().toLower();
    if (scheme == u"http" || scheme == u"https" || scheme == u"mailto") {
        outside(url);
        return;
    }
    auto *const question = new Tessaline::LinkQuestion(shownTarget(url), parent);
    question->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(question, &QDialog::accepted, question, [url, outside] { outside(url); });
    question->open();
}

void openOnDesktop(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}

} // namespace MarkdownUI
