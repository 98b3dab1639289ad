#pragma once

#include "foundation_ui/PlainButton.h"

namespace Tessaline {

/// A button of the format toolbar: posts its command and does nothing else; which editor is open, and what is selected
/// there, is the editor's business. It shows a symbol, or a short text in its place.
class FormatButton final : public PlainButton
{
    Q_OBJECT
public:
    static constexpr int kSide = 24;

    enum class Face { Symbol, Text };

    /// `type` is the command word ("bold"), `content` the name of a symbol or the text, `help` the tool tip and the
    /// accessible name.
    FormatButton(const Theme &theme, const QString &type, Face face, const QString &content, const QString &help,
                 QWidget *parent = nullptr);

    const QString &type() const { return m_type; }
    QSize sizeHint() const override { return {kSide, kSide}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_type;
    Face m_face;
    QString m_content;
};

} // namespace Tessaline
