#include "probe/Operations.h"

#include "panels/ContextLink.h"
#include "panels/EditSuggestions.h"
#include "panels/LikelyDuplicate.h"
#include "panels/RobustMatch.h"
#include "panels/UniqueSearch.h"

#include <nlohmann/json.hpp>

namespace Tessaline::Probe {

namespace {

ChatMessage assistantMessage(const QString &content)
{
    return {.id = QUuid(), .role = kAssistantRole.toString(), .content = content};
}

QList<ContextItem> itemsNamed(const QStringList &names)
{
    QList<ContextItem> items;
    for (const QString &name : names)
        items.append({.name = name, .subtitle = {}, .content = {}, .digest = {}});
    return items;
}

Json jsonOf(const TextRange &range)
{
    return {{"location", range.location}, {"length", range.length}};
}

Json jsonOf(const UniqueRange &found)
{
    switch (found.kind) {
    case UniqueRange::Kind::Unique:
        return {{"kind", "unique"}, {"location", found.range.location}, {"length", found.range.length}};
    case UniqueRange::Kind::Ambiguous:
        return {{"kind", "ambiguous"}};
    case UniqueRange::Kind::Absent:
        break;
    }
    return {{"kind", "absent"}};
}

constexpr Operation kOperations[] = {
    {"editSuggestions",
     [](const Arguments &arguments) {
         const QString given = arguments.text("messageId");
         const QUuid id(given);
         const QString messageId = id.isNull() ? given : id.toString(QUuid::WithoutBraces).toUpper();
         Json list = Json::array();
         for (const EditSuggestion &suggestion : editSuggestions(messageId, arguments.text("content")))
             list.push_back({{"id", jsonFrom(suggestion.id)},
                             {"originalText", jsonFrom(suggestion.originalText)},
                             {"replacementText", jsonFrom(suggestion.replacementText)}});
         return list;
     }},
    {"displayText",
     [](const Arguments &arguments) { return jsonFrom(displayText(assistantMessage(arguments.text("content")))); }},
    {"uniqueRange",
     [](const Arguments &arguments) {
         return jsonOf(uniqueRange(arguments.text("needle"), arguments.text("haystack"),
                                   arguments.flag("caseInsensitive") ? Likeness::CaseIgnored : Likeness::Exact));
     }},
    {"normalizedForMatching",
     [](const Arguments &arguments) {
         const NormalizedText normalized = normalizedForMatching(arguments.text("text"));
         return Json{{"text", jsonFrom(normalized.text)}, {"positions", normalized.positions}};
     }},
    {"robustMatchRange",
     [](const Arguments &arguments) {
         const std::optional<TextRange> range =
             robustMatchRange(arguments.text("original"), arguments.text("document"));
         return range ? jsonOf(*range) : Json();
     }},
    {"findLikelyDuplicate",
     [](const Arguments &arguments) {
         const std::optional<qsizetype> index =
             findLikelyDuplicate(arguments.text("name"), itemsNamed(arguments.texts("attached")));
         return index ? Json(*index) : Json();
     }},
    {"visibleSuggestions",
     [](const Arguments &arguments) {
         Json list = Json::array();
         for (const QString &suggestion :
              visibleSuggestions(arguments.texts("suggested"), itemsNamed(arguments.texts("attached"))))
             list.push_back(jsonFrom(suggestion));
         return list;
     }},
    {"contextLink",
     [](const Arguments &arguments) {
         const ContextLink link = contextLink(arguments.text("url"));
         return Json{{"handled", link.isHandled}, {"concept", link.topic ? jsonFrom(*link.topic) : Json()}};
     }},
};

} // namespace

std::span<const Operation> panelsOperations()
{
    return kOperations;
}

} // namespace Tessaline::Probe
