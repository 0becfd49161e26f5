#include "app/files/search_controls.h"

#include "app/files/file_texts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {

SearchControls::SearchControls(std::span<const std::int64_t> sizes, std::int64_t defaultSize,
                               std::span<const int> ages, QWidget* parent)
    : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    auto* pickers = new QHBoxLayout();
    size_ = new QComboBox(this);
    size_->setObjectName(QStringLiteral("sizePicker"));
    size_->setAccessibleName(tr("Smallest size"));
    for (std::int64_t s : sizes) {
        size_->addItem(FileTexts::preset(s), QVariant::fromValue<qlonglong>(s));
    }
    size_->setCurrentIndex(
        std::max(0, size_->findData(QVariant::fromValue<qlonglong>(defaultSize))));
    auto* sizeLabel = new QLabel(tr("&Larger than"), this);
    sizeLabel->setBuddy(size_);
    pickers->addWidget(sizeLabel);
    pickers->addWidget(size_);
    if (!ages.empty()) {
        age_ = new QComboBox(this);
        age_->setObjectName(QStringLiteral("agePicker"));
        age_->setAccessibleName(tr("Age"));
        for (int days : ages) {
            age_->addItem(ageFilterTitle(days), days);
        }
        auto* ageLabel = new QLabel(tr("&Age"), this);
        ageLabel->setBuddy(age_);
        pickers->addSpacing(12);
        pickers->addWidget(ageLabel);
        pickers->addWidget(age_);
    }
    pickers->addStretch(1);
    scan_ = new QPushButton(tr("&Scan"), this);
    scan_->setObjectName(QStringLiteral("scan"));
    scan_->setDefault(true);
    cancel_ = new QPushButton(tr("Cancel"), this);
    cancel_->setObjectName(QStringLiteral("cancel"));
    cancel_->hide();
    pickers->addWidget(scan_);
    pickers->addWidget(cancel_);
    layout->addLayout(pickers);

    auto* toggles = new QHBoxLayout();
    library_ = new QCheckBox(tr("Include app &data"), this);
    library_->setObjectName(QStringLiteral("includeAppData"));
    library_->setToolTip(tr("Also look in the apps' own data folders: ~/.local, ~/.cache, "
                            "~/.config, ~/.var and ~/snap."));
    hidden_ = new QCheckBox(tr("Include &hidden files"), this);
    hidden_->setObjectName(QStringLiteral("includeHidden"));
    hidden_->setToolTip(tr("Also look at files and folders whose names start with a dot."));
    toggles->addWidget(library_);
    toggles->addWidget(hidden_);
    toggles->addStretch(1);
    layout->addLayout(toggles);

    auto* running = new QHBoxLayout();
    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("scanStatus"));
    progress_ = new QProgressBar(this);
    progress_->setAccessibleName(tr("Progress"));
    progress_->setTextVisible(false);
    progress_->setMaximumWidth(260);
    running->addWidget(status_, 1);
    running->addWidget(progress_);
    layout->addLayout(running);
    status_->hide();
    progress_->hide();

    connect(scan_, &QPushButton::clicked, this, &SearchControls::scanClicked);
    connect(cancel_, &QPushButton::clicked, this, &SearchControls::cancelClicked);
}

FileSearchOptions SearchControls::options() const {
    FileSearchOptions o;
    o.minimumSize = size_->currentData().toLongLong();
    o.includeLibrary = library_->isChecked();
    o.includeHidden = hidden_->isChecked();
    return o;
}

int SearchControls::olderThanDays() const {
    return age_ ? age_->currentData().toInt() : 0;
}

void SearchControls::setBusy(bool busy) {
    for (QWidget* w : {static_cast<QWidget*>(size_), static_cast<QWidget*>(age_),
                       static_cast<QWidget*>(library_), static_cast<QWidget*>(hidden_),
                       static_cast<QWidget*>(scan_)}) {
        if (w) {
            w->setEnabled(!busy);
        }
    }
    cancel_->setVisible(busy);
    progress_->setVisible(busy);
    if (!busy) {
        status_->setVisible(!status_->text().isEmpty());
    }
}

void SearchControls::setStatus(const QString& status, std::optional<double> fraction) {
    status_->setText(status);
    status_->setVisible(!status.isEmpty());
    if (fraction) {
        progress_->setRange(0, 1000);
        progress_->setValue(static_cast<int>(*fraction * 1000));
    } else {
        progress_->setRange(0, 0);
    }
}

QString SearchControls::statusText() const {
    return status_->isHidden() ? QString() : status_->text();
}

} // namespace tarvik
