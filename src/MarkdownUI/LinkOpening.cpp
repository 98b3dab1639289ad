#include "MarkdownUI/LinkOpening.h"

#include "foundation_ui/LinkQuestion.h"

#include <QtGui/QDesktopServices>

namespace MarkdownUI {

using namespace Qt::StringLiterals;

void openWithCare(const QUrl &url, QWidget *parent, const OpenURL &outside)
{
    const QString scheme = url.scheme().toLower();
    if (scheme == u"http" || scheme == u"https" || scheme == u"mailto") {
        outside(url);
        return;
    }
    auto *const question = new Tessaline::LinkQuestion(url.toString(), parent);
    question->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(question, &QDialog::accepted, question, [url, outside] { outside(url); });
    question->open();
}

void openOnDesktop(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}

} // namespace MarkdownUI
