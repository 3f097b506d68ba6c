#include "dialogs/fileexplorer.h"
#include "ui_fileexplorer.h"

#include "dialogs/confirmationbox.h"
#include "dialogs/keyboardwidget.h"
#include "platform/unit.h"
#include "storage/dcim.h"
#include "storage/inspectionfolder.h"
#include "storage/position.h"

#include <QColor>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(log, "tubix.dialogs")

const QColor kAccent(0x05, 0xb8, 0xcc);

} // namespace

// The folders, the current one in colour.
class FolderModel : public QFileSystemModel
{
public:
    using QFileSystemModel::QFileSystemModel;

    UnitPath current;

    QVariant data(const QModelIndex &index, int role) const override
    {
        if (role == Qt::ForegroundRole && unit::fromHost(filePath(index)) == current)
            return kAccent;
        return QFileSystemModel::data(index, role);
    }
};

FileExplorer::FileExplorer(QWidget *parent)
    : UnitDialog(parent, Qt::FramelessWindowHint), ui(std::make_unique<Ui::FileExplorer>())
{
    ui->setupUi(this);
}

FileExplorer::~FileExplorer() = default;

void FileExplorer::init(QObject *owner)
{
    m_pObject = owner;
    closeWithCard(m_pObject);
    // The model names host paths and starts in the card's folder: nothing outside the unit can be shown.
    // Hidden folders (thumbnails, the log's pictures) are left out.
    listFolders = new FolderModel(this);
    listFolders->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    ui->tView_Folders->setModel(listFolders);
    ui->tView_Folders->setRootIndex(listFolders->setRootPath(unit::path(kDcimFolder)));
    ui->tView_Folders->expand(listFolders->index(unit::path(kBaseFolder)));
    for (int column = 1; column < listFolders->columnCount(); ++column)
        ui->tView_Folders->hideColumn(column);
    setFolderButtonsEnabled(false);
}

void FileExplorer::setData(const UnitPath &folder)
{
    initialFolder = folder;
    listFolders->current = folder;
}

UnitPath FileExplorer::selectedFolder() const
{
    const QModelIndexList selected = ui->tView_Folders->selectionModel()->selectedIndexes();
    return selected.isEmpty() ? UnitPath() : unit::fromHost(listFolders->filePath(selected.first()));
}

void FileExplorer::select(const UnitPath &folder)
{
    const QModelIndex index = listFolders->index(unit::path(folder));
    ui->tView_Folders->setCurrentIndex(index);
    ui->tView_Folders->scrollTo(index);
}

void FileExplorer::setFolderButtonsEnabled(bool enabled)
{
    ui->btn_RenameFolder->setEnabled(enabled);
    ui->btn_DeleteFolder->setEnabled(enabled);
}

void FileExplorer::on_tView_Folders_clicked(const QModelIndex &index)
{
    returnableText = unit::fromHost(listFolders->filePath(index));
    qCDebug(log) << "Change to: " << returnableText;
    ui->tView_Folders->expand(index);
    setFolderButtonsEnabled(isInspectionFolder(returnableText));
}

void FileExplorer::chooseFolderOfTheDay()
{
    returnableText = folderOfTheDay();
    if (!QFileInfo::exists(unit::path(returnableText)))
        CreateDCIMStructure({});
}

void FileExplorer::on_btn_Confirm_clicked()
{
    const UnitPath selected = selectedFolder();
    if (selected.isEmpty()) {
        on_btn_Cancel_clicked(); // nothing was chosen: the current folder stays
        return;
    }
    if (isInspectionFolder(selected)) {
        returnableText = selected;
        CreateDCIMStructure(returnableText);
    } else {
        qCDebug(log) << "Found path in root of DCIM or in home/root -- redirect!";
        chooseFolderOfTheDay();
    }
    accept();
}

void FileExplorer::on_btn_Cancel_clicked()
{
    returnableText = initialFolder;
    if (!QFileInfo::exists(unit::path(initialFolder)))
        chooseFolderOfTheDay();
    QDialog::reject();
}

void FileExplorer::reject()
{
    on_btn_Cancel_clicked();
}

// The name may have come while the card went: then the dialog is closed, and nothing is done.
QString FileExplorer::askForName(const QString &text)
{
    keyboardWidget keyboard(text, QStringLiteral(":/keyboardwidget/keyboard_en.xml"), true, this);
    keyboard.init(m_pObject);
    keyboard.exec();
    return isVisible() ? keyboard.returnableText : QString();
}

void FileExplorer::on_btn_NewFolder_clicked()
{
    const UnitPath selected = selectedFolder();
    const UnitPath parent = selected.isEmpty() ? kBaseFolder : selected;
    qCDebug(log) << "Current Path: " << parent;
    const UnitPath folder = makeInspectionFolder(parent, askForName(QString()));
    if (folder.isEmpty())
        return;
    CreateDCIMStructure(folder);
    select(folder);
    setFolderButtonsEnabled(true);
}

void FileExplorer::on_btn_RenameFolder_clicked()
{
    const UnitPath folder = selectedFolder();
    const QString name = askForName(folder.name());
    if (name.isEmpty())
        return;
    const UnitPath renamed = renameInspectionFolder(folder, name);
    qCDebug(log) << "Cur Path:" << folder;
    qCDebug(log) << "New Path:" << renamed;
    if (renamed.isEmpty()) {
        qCDebug(log) << "Failed to rename folder";
    } else {
        setData(followRename(initialFolder, folder, renamed));
        select(renamed);
    }
    setFolderButtonsEnabled(false);
}

void FileExplorer::on_btn_DeleteFolder_clicked()
{
    const UnitPath folder = selectedFolder();
    qCDebug(log) << "Delete:" << folder;
    ConfirmationBox box(QPixmap(QStringLiteral(":/MyGraphicResources/graphics/confirmation_trashcan.png")),
                        this);
    box.closeWithCard(m_pObject);
    box.exec();
    if (box.returnStatus && isVisible() && isInspectionFolder(folder)) {
        qCDebug(log) << "Deleting:" << folder;
        // Before the row goes: the view would choose its neighbour instead.
        ui->tView_Folders->selectionModel()->clear();
        removeDir(folder);
    }
    setFolderButtonsEnabled(false);
}

void FileExplorer::onSDCardRemoved()
{
    returnableText = {};
    QDialog::reject();
}
