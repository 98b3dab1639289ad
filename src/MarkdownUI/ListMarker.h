#pragma once

#include "MarkdownUI/ListNumbering.h"

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QFont>

#include <variant>

class QPainter;

namespace MarkdownUI {

struct BulletSign {
    ListBullet sign = ListBullet::Disc;
    double size = 0; // points
    friend bool operator==(const BulletSign &, const BulletSign &) = default;
};

struct NumberSign {
    QString text; // "7."
    friend bool operator==(const NumberSign &, const NumberSign &) = default;
};

struct TaskSign {
    bool isCompleted = false;
    QString symbol;
    QColor inside; // what shines through the symbol
    friend bool operator==(const TaskSign &, const TaskSign &) = default;
};

/// What stands before an item of a list, at the trailing edge of its frame.
struct ListMarker {
    std::variant<BulletSign, NumberSign, TaskSign> sign;
    QFont font; // of numbers; of the text beside all others
    QColor color;
    int width = 0; // of the frame

    /// As it stands in plain text: "•", "7.", "[x]".
    QString plainText() const;
    /// `left` is the left edge of the frame, `baseline` that of the text beside.
    void paint(QPainter &painter, double left, double baseline) const;

    friend bool operator==(const ListMarker &, const ListMarker &) = default;
};

/// The width of a number as it is drawn: all digits are as wide as the widest.
double numberWidth(const QString &number, const QFont &font);

} // namespace MarkdownUI
