#include "tests/editing/GeneratedText.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QList<QString> &words()
{
    static const QList<QString> kWords{
        u"a"_s,
        u"word"_s,
        u" "_s,
        u"  "_s,
        u"longer_word9"_s,
        u"\t"_s,
        u"é"_s,
        u"e\u0301"_s,
        u"ß"_s,
        u"\U0001F600"_s,
        u"한국"_s,
        u"漢字"_s,
        u"שלום"_s,
        u"مرحبا"_s,
        u"\u00A0"_s,
        u"\uFEFF"_s,
        u"\uFFFC"_s,
        u"\uFDD0"_s,
        u"\u2028"_s,
        u"\u1112\u1161"_s,
        u"a\u0300\u0323"_s,
        u"\U0001D11E"_s,
        u"नमस्ते"_s,
        u"\u200D"_s,
        u"."_s,
        u"\U0001F1EB\U0001F1F7"_s,
        u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s,
        QString(QChar(0)),
    };
    return kWords;
}

const QList<QString> &lineEnds()
{
    static const QList<QString> kLineEnds{u"\n"_s, u"\r\n"_s, u"\r"_s, u"\u2029"_s, u"\n\n"_s, u"\n\r"_s};
    return kLineEnds;
}

} // namespace

QString GeneratedText::piece()
{
    const QList<QString> &list = oneIn(5) ? lineEnds() : words();
    return list.at(below(list.size()));
}

QString GeneratedText::text(qsizetype pieces)
{
    QString text;
    for (qsizetype i = 0; i < pieces; ++i)
        text.append(piece());
    return text;
}

QString GeneratedText::longLine(qsizetype length)
{
    const bool hasSpaces = oneIn(2);
    QString line;
    while (line.size() < length) {
        const QString word = words().at(below(words().size()));
        if (hasSpaces || !word.startsWith(u' '))
            line.append(word);
    }
    return line;
}

} // namespace Tessaline
