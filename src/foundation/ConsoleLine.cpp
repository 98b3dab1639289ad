#include "foundation/ConsoleLine.h"

#include <cstdio>

namespace Tessaline {

void printConsoleLine(const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

} // namespace Tessaline
