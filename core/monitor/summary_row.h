#pragma once

#include <QString>

namespace tarvik {

// A labelled line of a summary, in the user's words.
struct SummaryRow {
    QString label;
    QString value;
};

} // namespace tarvik
