#pragma once

#include "documents/EditorAreaView.h"
#include "documents/EditorControlToolbar.h"
#include "documents/ViewModeSelector.h"
#include "editing/FindBar.h"
#include "editing/MarkdownEditor.h"
#include "tests/documents/EditorAreaFixture.h"
#include "tests/documents/ToolbarFixture.h"

#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

/// The middle column in a window that has one other place for the focus.
class EditorAreaViewFixture : public EditorAreaFixture
{
protected:
    EditorAreaViewFixture() { m_preferences.setViewMode(ViewMode::RawMarkdown); }
    ~EditorAreaViewFixture() override { m_view.reset(); }

    /// Makes and shows the view; call it once, when the workspace is as the test wants it.
    void show()
    {
        m_view = std::make_unique<EditorAreaView>(EditorAreaViewParts{*m_area, m_workspace, m_preferences, m_theme,
                                                                      [this](EditorKind, QWidget *parent) {
                                                                          // Stands in for the formatted one, too, to
                                                                          // prove how two editors share a text.
                                                                          return new MarkdownEditor(m_theme, m_events,
                                                                                                    parent);
                                                                      }},
                                                  &m_window);
        if (m_viewFilter)
            m_view->installEventFilter(m_viewFilter);
        m_window.resize(900, 600);
        auto *layout = new QVBoxLayout(&m_window);
        layout->addWidget(&m_elsewhere);
        layout->addWidget(m_view.get(), 1);
        m_window.show();
        QApplication::setActiveWindow(&m_window);
    }

    void showWith(const FileURL &url)
    {
        m_workspace.openFile(url);
        show();
        ASSERT_TRUE(eventually([&] { return m_area->state() == EditorAreaState::Ready; }));
    }

    /// The editors on screen, from left to right.
    QList<DocumentEditor *> editors() const
    {
        QList<DocumentEditor *> editors = m_view->findChildren<DocumentEditor *>();
        editors.removeIf([](DocumentEditor *editor) { return !editor->isVisible(); });
        std::sort(editors.begin(), editors.end(), [](DocumentEditor *left, DocumentEditor *right) {
            return left->mapToGlobal(QPoint()).x() < right->mapToGlobal(QPoint()).x();
        });
        return editors;
    }

    QString editorText(qsizetype index = 0) const { return editors().at(index)->shownText().toString(); }
    bool editorHasFocus() const { return !editors().isEmpty() && editors().first()->textView()->hasFocus(); }

    void clickButton(const QString &name)
    {
        // One that was made just now has no place yet, and nobody could click it.
        PlainButton *button = nullptr;
        const auto isInPlace = [&] {
            button = buttonNamed(*m_view, name);
            return button && !button->rect().isEmpty();
        };
        ASSERT_TRUE(eventually(isInPlace)) << name.toStdString();
        QTest::mouseClick(button, Qt::LeftButton);
    }

    QObject *m_viewFilter = nullptr; // sees the events of the view from its first show on
    Theme m_theme;
    QWidget m_window;
    QLineEdit m_elsewhere;
    std::unique_ptr<EditorAreaView> m_view;
};

} // namespace Tessaline
