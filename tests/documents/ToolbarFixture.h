#pragma once

#include "documents/AppPreferences.h"
#include "documents/EditorControlToolbar.h"
#include "foundation/Preferences.h"
#include "foundation_ui/PlainButton.h"
#include "foundation_ui/Tag.h"
#include "tests/support/TemporaryFiles.h"

#include <QtGui/QAccessible>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>

#include <gtest/gtest.h>

namespace Tessaline {

inline QString accessibleText(QWidget *widget, QAccessible::Text kind)
{
    return QAccessible::queryAccessibleInterface(widget)->text(kind);
}

/// The visible button of this accessible name below `parent`; null if there is none.
inline PlainButton *buttonNamed(const QWidget &parent, const QString &name)
{
    for (PlainButton *button : parent.findChildren<PlainButton *>())
        if (button->isVisibleTo(&parent) && accessibleText(button, QAccessible::Name) == name)
            return button;
    return nullptr;
}

/// Whether a label below `parent` that can be seen shows exactly this text.
inline bool showsText(const QWidget &parent, const QString &text)
{
    const QList<QLabel *> labels = parent.findChildren<QLabel *>();
    return std::any_of(labels.begin(), labels.end(),
                       [&](QLabel *label) { return label->isVisibleTo(&parent) && label->text() == text; });
}

/// The toolbar of a Markdown file in a project.
class ToolbarFixture : public ::testing::Test
{
protected:
    ToolbarFixture()
    {
        m_toolbar.setFile(m_url, ProjectReference{m_root});
        m_toolbar.setViewModes(availableViewModes(DocumentType::Markdown), ViewMode::Editor);
        m_toolbar.resize(1000, m_toolbar.height());
        m_toolbar.show();
        QApplication::setActiveWindow(&m_toolbar);
    }

    void click(const QString &name)
    {
        PlainButton *button = buttonNamed(m_toolbar, name);
        ASSERT_NE(button, nullptr) << name.toStdString();
        QTest::mouseClick(button, Qt::LeftButton);
    }

    const TemporaryFiles m_files;
    const FileURL m_root{QStringLiteral("/projects/field-notes")};
    const FileURL m_url{QStringLiteral("/projects/field-notes/chapters/tides.md")};
    Preferences m_stored{m_files.url(QStringLiteral("preferences.json"))};
    AppPreferences m_preferences{m_stored};
    Theme m_theme;
    EditorControlToolbar m_toolbar{m_preferences, m_theme};
};

} // namespace Tessaline
