#pragma once

#include "core/cleanup/large_file_scanner.h"

#include <QWidget>
#include <span>

class QCheckBox;
class QComboBox;

namespace tarvik {

// What both file searches ask: how large (and, for Large & Old Files, how old), and whether to
// look into the apps' data and hidden files. Scan, Cancel and the progress are the frame's.
class SearchControls : public QWidget {
    Q_OBJECT
public:
    // `ages` empty: no age picker.
    SearchControls(std::span<const std::int64_t> sizes, std::int64_t defaultSize,
                   std::span<const int> ages, QWidget* parent = nullptr);

    // The search the pickers describe; the root is left empty (the home folder).
    FileSearchOptions options() const;
    int olderThanDays() const; // 0: any age

    QComboBox* sizePicker() const { return size_; }
    QComboBox* agePicker() const { return age_; }
    QCheckBox* includeAppData() const { return library_; }
    QCheckBox* includeHidden() const { return hidden_; }

private:
    QComboBox* size_ = nullptr;
    QComboBox* age_ = nullptr;
    QCheckBox* library_ = nullptr;
    QCheckBox* hidden_ = nullptr;
};

} // namespace tarvik
