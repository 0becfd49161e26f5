#pragma once

#include "core/cleanup/large_file_scanner.h"

#include <QWidget>
#include <span>

class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;

namespace tarvik {

// The top of both file searches: how large (and, for Large & Old Files, how old), whether to
// look into the apps' data and hidden files, Scan and Cancel, and the progress while it runs.
class SearchControls : public QWidget {
    Q_OBJECT
public:
    // `ages` empty: no age picker.
    SearchControls(std::span<const std::int64_t> sizes, std::int64_t defaultSize,
                   std::span<const int> ages, QWidget* parent = nullptr);

    // The search the pickers describe; the root is left empty (the home folder).
    FileSearchOptions options() const;
    int olderThanDays() const; // 0: any age

    // While a search or removal runs, the pickers rest and Cancel shows; `status` says what
    // is happening. The bar is busy without a fraction, filled from 0 to 1 with one.
    void setBusy(bool busy);
    void setStatus(const QString& status, std::optional<double> fraction = std::nullopt);

    QComboBox* sizePicker() const { return size_; }
    QComboBox* agePicker() const { return age_; }
    QCheckBox* includeAppData() const { return library_; }
    QCheckBox* includeHidden() const { return hidden_; }
    QPushButton* scanButton() const { return scan_; }
    QPushButton* cancelButton() const { return cancel_; }
    QString statusText() const;

signals:
    void scanClicked();
    void cancelClicked();

private:
    QComboBox* size_ = nullptr;
    QComboBox* age_ = nullptr;
    QCheckBox* library_ = nullptr;
    QCheckBox* hidden_ = nullptr;
    QPushButton* scan_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QLabel* status_ = nullptr;
    QProgressBar* progress_ = nullptr;
};

} // namespace tarvik
