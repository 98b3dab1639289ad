#pragma once

#include "tests/probe/ProbeProcess.h"

#include <gtest/gtest.h>

#include <string>

namespace Tessaline {

/// A request to the probe and what it must bring.
struct OperationCase {
    const char *name;
    const char *request; // without the braces; line breaks are for the eye
    const char *result;  // as JSON
};

inline std::string nameOfCase(const testing::TestParamInfo<OperationCase> &parameter)
{
    return parameter.param.name;
}

void expectResult(ProbeProcess &probe, const OperationCase &operation);

/// Of a whole request in one line.
void expectError(ProbeProcess &probe, const char *request, const char *error);

} // namespace Tessaline
