#include "tests/probe/OperationCase.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace Tessaline {

using namespace Qt::StringLiterals;

void expectResult(ProbeProcess &probe, const OperationCase &operation)
{
    const QByteArray request = QByteArray('{' + QByteArray(operation.request) + '}').replace('\n', ' ');
    const QByteArray answer = probe.answerTo(request);

    // In a list, so that any value of JSON can be read.
    const QJsonValue result = QJsonDocument::fromJson('[' + QByteArray(operation.result) + ']').array().at(0);
    const QJsonObject expected{{u"ok"_s, true}, {u"result"_s, result}};
    EXPECT_EQ(QJsonDocument::fromJson(answer).object(), expected) << operation.name << ": " << answer.constData();
}

void expectError(ProbeProcess &probe, const char *request, const char *error)
{
    const QJsonObject answer = QJsonDocument::fromJson(probe.answerTo(request)).object();

    EXPECT_EQ(answer.value(u"ok"_s), QJsonValue(false)) << request;
    EXPECT_EQ(answer.value(u"error"_s).toString().toStdString(), error) << request;
}

} // namespace Tessaline
