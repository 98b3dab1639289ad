// Reads bytes as an HTTP reply, in one piece and byte by byte.

#include "fuzz/Require.h"

#include "Services/HttpReplyParser.h"

using namespace Tessaline;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));

    HttpReplyParser whole;
    const QByteArray body = whole.take(bytes);
    HttpReplyParser cut;
    QByteArray bodyOfBytes;
    for (const char byte : bytes)
        bodyOfBytes += cut.take(QByteArray(1, byte));

    REQUIRE(body == bodyOfBytes);
    REQUIRE(body.size() <= bytes.size());
    REQUIRE(whole.status() == cut.status());
    REQUIRE(whole.isComplete() == cut.isComplete());
    REQUIRE(whole.isMalformed() == cut.isMalformed());
    REQUIRE(!whole.isComplete() || whole.status());
    REQUIRE(body.isEmpty() || whole.status());
    whole.finish();
    REQUIRE(whole.isComplete() != whole.isMalformed());
    return 0;
}
