#include "app/shell/navigator.h"

namespace tarvik {

void Navigator::select(AppSection section) {
    if (section == selection_) {
        return;
    }
    selection_ = section;
    emit selectionChanged(section);
}

void Navigator::selectNext() {
    const auto index = static_cast<std::size_t>(selection_);
    if (index + 1 < kSectionCount) {
        select(static_cast<AppSection>(index + 1));
    }
}

void Navigator::selectPrevious() {
    const auto index = static_cast<std::size_t>(selection_);
    if (index > 0) {
        select(static_cast<AppSection>(index - 1));
    }
}

} // namespace tarvik
