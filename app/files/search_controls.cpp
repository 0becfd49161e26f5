#include "app/files/search_controls.h"

#include "app/cleanup/file_texts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
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

} // namespace tarvik
