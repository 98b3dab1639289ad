#include "MarkdownUI/FontProperties.h"

namespace MarkdownUI {

size_t FontProperties::hash(size_t seed) const noexcept
{
    const Design *design = std::get_if<Design>(&family);
    const size_t familyHash = design ? ::qHash(static_cast<int>(*design)) : ::qHash(std::get<QString>(family));
    return qHashMulti(seed, family.index(), familyHash, static_cast<int>(familyVariant), static_cast<int>(capsVariant),
                      static_cast<int>(digitVariant), static_cast<int>(style), static_cast<int>(weight),
                      widthStorage ? static_cast<int>(*widthStorage) : -1, size, scale);
}

} // namespace MarkdownUI
