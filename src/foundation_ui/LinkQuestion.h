#pragma once

#include <QtWidgets/QDialog>

namespace Tessaline {

/// Asks whether a link may be opened, and shows the whole of where it leads: as plain text, in a field that scrolls,
/// with the signs in it that would hide a part of it written out. Declining is the default. Accepted means yes.
class LinkQuestion final : public QDialog
{
    Q_OBJECT
public:
    LinkQuestion(const QString &target, QWidget *parent);

    /// A target with controls, direction marks, invisible signs and unusual spaces as their numbers: ‹U+202E›.
    static QString shown(const QString &target);
};

} // namespace Tessaline
