#include "tests/documents/EditorAreaViewFixture.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class SaveAlertTest : public EditorAreaViewFixture
{
protected:
    SaveAlertTest() { show(); }

    void fail(const FileURL &url, const QString &message)
    {
        m_events.post(AppEvents::kDocumentSaveFailed,
                      {{AppEvents::kUrl, QVariant::fromValue(url)}, {AppEvents::kMessage, message}});
    }

    QList<QMessageBox *> alerts() const
    {
        QList<QMessageBox *> alerts = m_view->findChildren<QMessageBox *>();
        alerts.removeIf([](QMessageBox *alert) { return !alert->isVisible(); });
        return alerts;
    }
};

} // namespace

TEST_F(SaveAlertTest, AFailedSaveIsShownWithTheNameOfTheFile)
{
    fail(m_a, u"The disk is full."_s);

    ASSERT_EQ(alerts().size(), 1);
    EXPECT_EQ(alerts().first()->text(), u"Couldn’t Save Document"_s);
    EXPECT_EQ(alerts().first()->windowTitle(), u"Couldn’t Save Document"_s);
    EXPECT_EQ(alerts().first()->informativeText(), u"a.md: The disk is full."_s);
    ASSERT_EQ(alerts().first()->buttons().size(), 1);
    EXPECT_EQ(alerts().first()->buttons().first()->text(), u"OK"_s);
    EXPECT_EQ(alerts().first()->buttonRole(alerts().first()->buttons().first()), QMessageBox::RejectRole);
}

TEST_F(SaveAlertTest, OfTwoFailuresTheLaterIsShown)
{
    fail(m_a, u"The disk is full."_s);
    fail(m_b, u"There is no such folder."_s);

    ASSERT_EQ(alerts().size(), 1);
    EXPECT_EQ(alerts().first()->informativeText(), u"b.md: There is no such folder."_s);
}

TEST_F(SaveAlertTest, OkDismissesIt)
{
    fail(m_a, u"The disk is full."_s);

    QTest::mouseClick(alerts().first()->buttons().first(), Qt::LeftButton);

    EXPECT_TRUE(alerts().isEmpty());
    EXPECT_EQ(m_area->saveErrorMessage(), std::nullopt);
}

TEST_F(SaveAlertTest, EscAndClosingDismissItToo)
{
    fail(m_a, u"The disk is full."_s);
    QTest::keyClick(alerts().first(), Qt::Key_Escape);
    EXPECT_EQ(m_area->saveErrorMessage(), std::nullopt);

    fail(m_a, u"The disk is full."_s);
    ASSERT_EQ(alerts().size(), 1);
    alerts().first()->close();
    EXPECT_EQ(m_area->saveErrorMessage(), std::nullopt);
    EXPECT_TRUE(alerts().isEmpty());
}

TEST_F(SaveAlertTest, AFailureAfterItWasDismissedIsShownAgain)
{
    fail(m_a, u"The disk is full."_s);
    alerts().first()->close();

    fail(m_a, u"The disk is full."_s);

    EXPECT_EQ(alerts().size(), 1);
}

TEST_F(SaveAlertTest, WithoutAMessageThereIsNone)
{
    m_events.post(AppEvents::kDocumentSaveFailed, {{AppEvents::kUrl, QVariant::fromValue(m_a)}});

    EXPECT_TRUE(alerts().isEmpty());
}

TEST_F(SaveAlertTest, MarkupInANameIsShownAsItIs)
{
    fail(FileURL(u"/docs/<b>bold.md"_s), u"No."_s);

    const QList<QLabel *> labels = alerts().first()->findChildren<QLabel *>();
    const auto body =
        std::find_if(labels.begin(), labels.end(), [](QLabel *label) { return label->text() == u"<b>bold.md: No."_s; });
    ASSERT_NE(body, labels.end());
    EXPECT_EQ((*body)->textFormat(), Qt::PlainText);
}

TEST_F(SaveAlertTest, TheDocumentStaysOpenAndEditable)
{
    open(m_a);
    fail(m_a, u"The disk is full."_s);
    alerts().first()->close();

    QTest::keyClicks(editors().first()->textView(), u"x"_s);

    EXPECT_EQ(shown(m_a), u"xtext of a"_s);
}

} // namespace Tessaline
