// The dialog in which the inspection folder is chosen, made, renamed and deleted. GUI thread.
#pragma once

#include "dialogs/unitdialog.h"
#include "platform/unit.h"

#include <memory>

class FolderModel;
class QModelIndex;
namespace Ui {
class FileExplorer;
}

class FileExplorer : public UnitDialog
{
    Q_OBJECT

public:
    // Build, init(), setData(), exec(), then read returnableText.
    explicit FileExplorer(QWidget *parent);
    ~FileExplorer() override;

    // `owner` has the signal SDCardRemoved(), at which the dialog closes.
    void init(QObject *owner);

    // The current folder, to which a cancel comes back.
    void setData(const UnitPath &folder);

    // The folder chosen: it exists and lies below the base folder. Empty: the card is gone.
    UnitPath returnableText;

public slots:
    void reject() override; // as the cancel button
    void onSDCardRemoved() override;

private slots:
    void on_tView_Folders_clicked(const QModelIndex &index);
    void on_btn_Confirm_clicked();
    void on_btn_Cancel_clicked();
    void on_btn_NewFolder_clicked();
    void on_btn_RenameFolder_clicked();
    void on_btn_DeleteFolder_clicked();

private:
    UnitPath selectedFolder() const; // empty: nothing is selected
    void select(const UnitPath &folder);
    void setFolderButtonsEnabled(bool enabled);
    void chooseFolderOfTheDay();
    QString askForName(const QString &text);

    std::unique_ptr<Ui::FileExplorer> ui;
    QObject *m_pObject = nullptr; // not owned
    FolderModel *listFolders = nullptr;
    UnitPath initialFolder;
};
