#pragma once

#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTextEdit;
class QTreeWidget;

namespace tarvik {

class Card;
class EmptyState;

class BrewModel;

// The Homebrew section: installed formulae and casks with search and filters, details, and the
// actions, each with a live log, progress, cancel and an explained failure with retry.
class BrewScreen : public QWidget {
    Q_OBJECT
public:
    explicit BrewScreen(BrewModel& model, QWidget* parent = nullptr);

    QTreeWidget* packages() const { return tree_; }
    QString failureText() const;
    void setFilter(int index);
    void setSearch(const QString& text);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void render();
    void renderRun();
    void updateButtons();
    void renderList();
    void renderDetails();
    QString selectedName() const;

    BrewModel& model_;
    QLabel* status_ = nullptr;
    QLineEdit* search_ = nullptr;
    QComboBox* filter_ = nullptr;
    QTreeWidget* tree_ = nullptr;
    QLabel* details_ = nullptr;
    Card* detailsCard_ = nullptr;
    EmptyState* notInstalled_ = nullptr;
    QWidget* listPage_ = nullptr;
    QPushButton* refresh_ = nullptr;
    QPushButton* upgradeAll_ = nullptr;
    QPushButton* upgradeSelected_ = nullptr;
    QPushButton* uninstall_ = nullptr;
    QPushButton* unpin_ = nullptr;
    QPushButton* install_ = nullptr;
    QPushButton* doctor_ = nullptr;
    QPushButton* cleanup_ = nullptr;
    QWidget* runBox_ = nullptr;
    QLabel* runTitle_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QTextEdit* log_ = nullptr;
    QLabel* failure_ = nullptr;
    QPushButton* retry_ = nullptr;
    bool loadedOnce_ = false;
};

} // namespace tarvik
