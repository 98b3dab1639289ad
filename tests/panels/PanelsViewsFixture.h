#pragma once

#include "NetworkImage/NetworkImageLoader.h"
#include "panels/AssistantPanels.h"
#include "panels/ChatInput.h"
#include "panels/ChatMessagesList.h"
#include "panels/ChatSection.h"
#include "panels/SessionView.h"
#include "tests/panels/PanelsFixture.h"
#include "tests/support/DressingTheme.h"

#include <QtCore/QPromise>
#include <QtGui/QImage>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>

namespace Tessaline {

/// Gives the same picture for every address, and keeps the addresses.
class KnownImages final : public NetworkImage::NetworkImageLoader
{
public:
    QFuture<NetworkImage::ImageResult> image(const QUrl &url) override
    {
        m_asked.append(url);
        QImage image(40, 300, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        QPromise<NetworkImage::ImageResult> promise;
        promise.start();
        promise.addResult(NetworkImage::ImageResult(image));
        promise.finish();
        return promise.future();
    }
    const QList<QUrl> &asked() const { return m_asked; }

private:
    QList<QUrl> m_asked;
};

/// The column of the assistant in a window of its own, over the fixture's service. `show` comes after `serve`.
class PanelsViewsFixture : public PanelsFixture
{
protected:
    void show()
    {
        m_panels = std::make_unique<AssistantPanels>(
            AssistantPanelsParts{*m_ai, m_documents, m_area, m_workspace, m_events, m_disk,
                                 [this](const QString &text) { m_clipboard = text; }});
        m_column = std::make_unique<SessionView>(SessionViewParts{.ai = *m_ai,
                                                                  .composer = m_panels->composer,
                                                                  .suggestions = m_panels->suggestions,
                                                                  .context = m_panels->context,
                                                                  .workspace = m_workspace,
                                                                  .area = m_area,
                                                                  .events = m_events,
                                                                  .theme = dressingTheme(),
                                                                  .askForFiles = [this] { return m_chosenFiles; },
                                                                  .openOutside = [](const QUrl &) {},
                                                                  .imageLoader = &m_images});
        m_column->resize(380, 800);
        m_column->show();
        m_column->activateWindow();
        ASSERT_TRUE(eventually([this] { return m_column->isActiveWindow(); }));
    }

    void TearDown() override
    {
        m_column.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_panels.reset();
        m_ai.reset();
    }

    /// The visible widgets of a kind inside of another one.
    template <class Widget>
    static QList<Widget *> visible(const QWidget &place)
    {
        QList<Widget *> found;
        for (Widget *widget : place.findChildren<Widget *>())
            if (widget->isVisible())
                found.append(widget);
        return found;
    }

    static QAbstractButton *button(const QWidget &place, const QString &text)
    {
        for (QAbstractButton *each : visible<QAbstractButton>(place))
            if (each->text() == text || each->accessibleName() == text)
                return each;
        ADD_FAILURE() << "no button " << text.toStdString();
        return nullptr;
    }
    static bool hasButton(const QWidget &place, const QString &text)
    {
        for (const QAbstractButton *each : visible<QAbstractButton>(place))
            if (each->text() == text || each->accessibleName() == text)
                return true;
        return false;
    }
    static QStringList texts(const QWidget &place)
    {
        QStringList texts;
        for (const QLabel *label : visible<QLabel>(place))
            texts.append(label->text());
        return texts;
    }
    static void click(QWidget *widget)
    {
        ASSERT_TRUE(widget);
        QTest::mouseClick(widget, Qt::LeftButton);
    }
    /// Where the keys go: to the popup, where there is one.
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QWidget *target = QApplication::activePopupWidget();
        if (target && target->focusWidget())
            target = target->focusWidget();
        if (!target)
            target = QApplication::focusWidget();
        ASSERT_TRUE(target);
        QTest::keyClick(target, key, modifiers);
    }

    QLineEdit &field() const { return *qobject_cast<QLineEdit *>(m_column->chat().input().field()); }
    ChatMessagesList &list() const { return m_column->chat().messages(); }
    QWidget &input() const { return m_column->chat().input(); }

    static ChatMessage message(const QString &role, const QString &content)
    {
        ChatMessage message;
        message.id = QUuid::createUuid();
        message.role = role;
        message.content = content;
        return message;
    }

    KnownImages m_images;
    QList<FileURL> m_chosenFiles;
    QString m_clipboard;
    std::unique_ptr<AssistantPanels> m_panels;
    std::unique_ptr<SessionView> m_column;
};

} // namespace Tessaline
