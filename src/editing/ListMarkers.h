#pragma once

#include "editing/SharedText.h"

#include <optional>

namespace Tessaline {

/// The generated texts before the content of list items. Each ends with the tab that moves the content to its stop.
namespace ListMarker {

SharedText bullet();
SharedText task(bool isDone);
/// The number, a dot and a tab.
SharedText number(qint64 number);

} // namespace ListMarker

/// The item that Return begins.
struct ListItem {
    SharedText marker;
    SharedText style; // the tag
    friend bool operator==(const ListItem &, const ListItem &) = default;
};

/// The item behind an item of the kind `style`; absent if that is no list item. A number grows by one, and a number
/// that cannot be read, or grow, gives 2 or stays. NOTE: behind a done task comes a task that is done but shows an open
/// box.
std::optional<ListItem> nextListItem(QStringView style);

} // namespace Tessaline
