#pragma once

#include "documents/OpenFileReference.h"
#include "foundation_ui/Theme.h"

#include <QtWidgets/QWidget>

namespace Tessaline {

class Label;
class OpenFileRow;
class Workspace;

/// The open files, one row of two lines each, or "No Open Files".
class OpenFilesList final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kRowHeight = 40;

    /// Both must outlive the list.
    OpenFilesList(Workspace &workspace, const Theme &theme, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    void documentChosen();
    /// The height it wants has changed.
    void heightChanged();
    /// This row has become the active one, or the keyboard has moved to it: bring it into view.
    void rowNeeded(QWidget *row);

protected:
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override; // the keys of the rows

private:
    void takeFiles();
    void takeActiveFile();
    OpenFileRow *makeRow();
    void layOut();

    Workspace &m_workspace;
    const Theme &m_theme;
    Label *m_noFiles;
    QList<OpenFileRow *> m_rows;
};

} // namespace Tessaline
