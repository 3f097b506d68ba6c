// The damage catalog: the user picks a finding, adds one, deletes one, or takes the shown one off the film.
#pragma once

#include "dialogs/unitdialog.h"

#include <memory>

class params;
namespace Ui {
class DamageCatelog;
}

class DamageCatelog : public UnitDialog
{
    Q_OBJECT

public:
    // Where `parent` tells of a pulled card, it and what it opens close with the card.
    explicit DamageCatelog(QWidget *parent);
    ~DamageCatelog() override;

    void init(); // fills the list; before exec()

    QString returnDamageDescription; // the chosen entry; empty: the shown one is to be taken off
    bool returnValue = false;        // the caller has to act

public slots:
    void on_listW_DamageCatelog_itemSelectionChanged();
    void on_btn_DamageCatelog_Confirm_clicked();
    void on_btn_DamageCatelog_Cancel_clicked();
    void on_btn_DamageCatelog_RemovedDamageNotation_clicked();
    void on_btn_DamageCatelog_AddItem_clicked();
    void on_btn_DamageCatelog_DeleteItem_clicked();

private:
    void populateDamageCatelogListWidget();
    void answer(bool act, const QString &description); // and closes

    std::unique_ptr<Ui::DamageCatelog> ui;
    params *m_pParams = nullptr; // not owned
};
