#include "probe/Operations.h"

namespace Tessaline::Probe {

std::vector<Operation> allOperations()
{
    std::vector<Operation> all;
    for (const std::span<const Operation> module :
         {documentsOperations(), editingOperations(), markdownDisplayOperations(), panelsOperations(),
          servicesOperations()})
        all.insert(all.end(), module.begin(), module.end());
    return all;
}

} // namespace Tessaline::Probe
