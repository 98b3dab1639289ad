// tessaline-probe: the functions of the libraries without widgets, by lines of JSON. One request a line on standard
// input, one answer a line on standard output, until the input ends.

#include "probe/Answer.h"

#include <cstdio>
#include <iostream>
#include <string>

#include <unistd.h>

int main()
{
    using namespace Tessaline::Probe;

    // The libraries print lines for developers on standard output; here it belongs to the answers.
    const int answersDescriptor = dup(STDOUT_FILENO);
    std::FILE *const answers = answersDescriptor < 0 ? nullptr : fdopen(answersDescriptor, "w");
    if (!answers || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        std::perror("tessaline-probe: no standard output");
        return 1;
    }

    const std::vector<Operation> operations = allOperations();
    std::ios::sync_with_stdio(false);
    for (std::string line; std::getline(std::cin, line);) {
        const std::string text = answer(line, operations) + '\n';
        std::fwrite(text.data(), 1, text.size(), answers);
        if (std::fflush(answers) != 0) {
            std::perror("tessaline-probe: the answers cannot be written");
            return 1;
        }
    }
    return 0;
}
