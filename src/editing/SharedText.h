#pragma once

#include <QtCore/QSharedData>
#include <QtCore/QString>

namespace Tessaline {

/// A text that many values share, or no text at all: one pointer wide, cheap to copy and never changed. An empty text
/// and an absent one differ.
class SharedText
{
public:
    SharedText() = default; // absent
    explicit SharedText(const QString &text) : m_data(new Data(text)) {}
    explicit SharedText(QStringView text) : SharedText(text.toString()) {}

    bool isPresent() const { return static_cast<bool>(m_data); }
    /// Empty if the text is absent.
    QStringView view() const { return m_data ? QStringView(m_data->text) : QStringView(); }
    QString toString() const { return m_data ? m_data->text : QString(); }

    friend bool operator==(const SharedText &left, const SharedText &right)
    {
        if (left.m_data == right.m_data)
            return true;
        return left.m_data && right.m_data && left.m_data->text == right.m_data->text;
    }
    friend bool operator==(const SharedText &left, QStringView right)
    {
        return left.m_data && QStringView(left.m_data->text) == right;
    }

    friend size_t qHash(const SharedText &text, size_t seed = 0)
    {
        return qHashMulti(seed, text.isPresent(), text.view());
    }

private:
    struct Data : QSharedData {
        explicit Data(const QString &t) : text(t) {}
        QString text;
    };
    QExplicitlySharedDataPointer<const Data> m_data;
};

} // namespace Tessaline

Q_DECLARE_TYPEINFO(Tessaline::SharedText, Q_RELOCATABLE_TYPE);
